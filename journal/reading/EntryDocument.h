#pragma once

#include "controls/look/JournalColors.h"

#include <QTextDocument>

namespace quillo {

struct EntryContent {
  QString title;    // the day, big above the text; may be empty
  QString details;  // time, place and weather, small under the title; may be empty
  QString text;     // as the person wrote it

  bool operator==(const EntryContent&) const = default;
};

// Sizes are in points, which are the document's units.
struct EntryLook {
  JournalColors colors;
  int fontSize{16};
  // Tags are drawn the same without: on paper there is nothing to go to.
  bool linksTags{true};
};

// An entry for reading: its text with the Markdown in it drawn and its hashtags as links to `tag:NAME`. A single line
// break stays one. Raw HTML is text, and nothing is ever fetched: in an image's place stands its alternative text. Of
// links only those to the web and to mail are links. A text that is too large or too tangled for the reader of Markdown
// is shown as it was typed, and of an extremely long one the beginning. Decorations (paintDecorations) are not drawn by
// QTextDocument. The document does not change once it is made.
class EntryDocument : public QTextDocument {
  Q_OBJECT

 public:
  EntryDocument(const EntryContent& content, const EntryLook& look, QObject* parent = nullptr);

  [[nodiscard]] const EntryLook& look() const { return m_look; }
  // The first block that is the entry's text, not its heading.
  [[nodiscard]] QTextBlock firstTextBlock() const;
  // Between two positions as plain text: items with what stands before them, a line break where one was typed.
  [[nodiscard]] QString plainText(int from, int to) const;

 protected:
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  void insertAsTyped(const QString& text);
  void insertHeading(const EntryContent& content);

  EntryLook m_look;
};

// The name of the tag that a link of a document leads to; empty where it leads elsewhere.
[[nodiscard]] QString tagOfLink(const QUrl& link);

}  // namespace quillo
