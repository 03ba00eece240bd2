#pragma once

#include <QStringList>
#include <QWidget>

namespace quillo {

// The small dark list of hashtags under the word being typed. It is a child of the window rather than a window of its
// own: it can take neither focus nor activation, and a click on it is a click inside the window, which a click
// elsewhere dismisses.
class HashtagCompletionList : public QWidget {
  Q_OBJECT

 public:
  static constexpr int maximumRows = 6;

  explicit HashtagCompletionList(QWidget* window);

  // Shows `tags` (without the '#') under the line of text that `word` covers, else above it, inside of `bounds`; both
  // in the window's coordinates. With `rightAligned` the list ends where the word begins on the right. Rows that have
  // no room on either side are left out. `selected` is -1 for none.
  void showTags(const QStringList& tags, int selected, QRect word, bool rightAligned, QRect bounds);

  [[nodiscard]] const QStringList& tags() const { return m_tags; }
  // -1: none.
  [[nodiscard]] int selectedRow() const { return m_selected; }
  // Wraps around at both ends.
  void moveSelection(int by);
  [[nodiscard]] QRect rowRect(int row) const;
  // -1 where there is none.
  [[nodiscard]] int rowAt(QPoint point) const;

 Q_SIGNALS:
  void selectionDidMove(const QString& tag);
  void chosen(const QString& tag);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  void select(int row);

  QStringList m_tags;
  int m_selected{-1};
};

}  // namespace quillo
