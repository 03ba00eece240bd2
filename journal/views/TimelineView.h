#pragma once

#include "journal/model/TimelineLayout.h"

#include <QAbstractScrollArea>
#include <QDate>
#include <QSet>
#include <QStringList>

namespace quillo {

struct TimelineRow;
class TimelineSource;

// The list of entries, grouped by day. Draws what is visible, whatever the journal's size. One entry is current; more
// can be chosen with Shift and Ctrl, as everywhere.
class TimelineView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  // The source must outlive the view.
  explicit TimelineView(TimelineSource& source, QWidget* parent = nullptr);

  // Row of the current entry; -1 for none.
  [[nodiscard]] int currentRow() const { return m_current; }
  [[nodiscard]] QString currentIdentifier() const { return m_currentIdentifier; }
  // Makes it the only chosen one, and visible. -1 for none.
  void setCurrentRow(int row);
  // At once where the row is known, else when it comes.
  void setCurrentEntry(const QString& identifier);
  // The current entry is going to stand under another day: it comes into view there once the list has it so.
  void followCurrentEntry(QDate day);
  // The chosen rows that have been read, from the top.
  [[nodiscard]] QStringList selectedIdentifiers() const;
  [[nodiscard]] int selectedCount() const { return static_cast<int>(m_selected.size()); }
  void showDay(QDate day);
  [[nodiscard]] const TimelineLayout& rows() const { return m_rows; }
  // Null while it is being read.
  [[nodiscard]] const TimelineRow* entryAt(int row) const;
  // In the viewport.
  [[nodiscard]] QRect rowRect(int row) const;
  [[nodiscard]] int rowAt(QPoint inViewport) const;

 Q_SIGNALS:
  // The current entry is another; empty for none.
  void currentEntryChanged(const QString& identifier);
  // Return, or a double click: on to the text.
  void entryActivated(const QString& identifier);
  // The Delete key, with something chosen.
  void deletionWanted();
  void contextMenuWanted(QPoint globalPosition);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void reload(bool isOther);
  void rowsDidArrive(int first, int last);
  void updateScrollBar();
  void choose(int row, Qt::KeyboardModifiers modifiers);
  void setCurrent(int row);
  void scrollTo(int row);
  void follow();
  [[nodiscard]] int rowForKey(int key) const;

  TimelineSource& m_source;
  TimelineLayout m_rows;
  int m_current{-1};
  int m_anchor{-1};  // where a choice with Shift begins
  QSet<int> m_selected;
  QString m_currentIdentifier;
  QDate m_followedDay;
  bool m_hasGoneThere{false};
};

}  // namespace quillo
