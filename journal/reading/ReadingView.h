#pragma once

#include "journal/reading/EntryDocument.h"

#include <QPointer>
#include <QTextBrowser>

namespace quillo {

// An entry for reading: its day and its text in a column that is easy on the eyes, on paper in the colours of the
// palette (JournalColors). Tab goes through links and tags, Return follows one; text can be selected with the pointer
// or the keyboard and is copied as plain text. Nothing is followed by the view itself, and nothing is fetched.
class ReadingView : public QTextBrowser {
  Q_OBJECT

 public:
  explicit ReadingView(QWidget* parent = nullptr);

  // Shows an entry from its top.
  void setEntry(const EntryContent& content);
  [[nodiscard]] const EntryContent& content() const { return m_content; }
  // Of the text, in points; the headings go with it.
  void setFontSize(int points);
  [[nodiscard]] int fontSize() const { return m_fontSize; }
  // Words that were searched for: what begins with them in the text is marked.
  void setSearchedWords(const QStringList& words);
  [[nodiscard]] int matchCount() const { return static_cast<int>(m_matches.size()); }
  // Scrolls to a match; nothing happens where there is no such one.
  void showMatch(int index);

 Q_SIGNALS:
  // To the web or to mail.
  void linkActivated(const QUrl& link);
  // Without the '#'.
  void tagActivated(const QString& tag);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;
  QMimeData* createMimeDataFromSelection() const override;
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  // In the document's positions.
  struct Match {
    int start{0};
    int length{0};
  };
  void rebuild();
  void findMatches();
  void follow(const QUrl& link);
  [[nodiscard]] int sideMargin() const;
  [[nodiscard]] QPointF origin() const;
  void paintMatches(QPainter& painter, const QRectF& clip) const;
  void paintFocusedLink(QPainter& painter) const;

  EntryContent m_content;
  QPointer<EntryDocument> m_entry;
  QStringList m_words;
  QList<Match> m_matches;
  int m_fontSize{16};
  JournalColors m_colors;
};

}  // namespace quillo
