#pragma once

#include "journal/reading/EntryDocument.h"

#include <QTextBlock>
#include <QTextCursor>

#include <optional>

namespace quillo {

// Gives what Qt's reader of Markdown made, or a plain text, the look of an entry: once, over the whole document.
class EntryStyler {
 public:
  EntryStyler(QTextDocument& document, const EntryLook& look);
  void run();

  // The formats of the entry's own heading.
  [[nodiscard]] QTextBlockFormat headingFormat(double size, double space) const;
  [[nodiscard]] QTextCharFormat headingCharacters(double size, QFont::Weight weight, const QColor& color) const;

 private:
  enum class Kind { Nothing, Paragraph, Item, Heading, Code, Rule, Cell };
  struct Facts {
    Kind kind{Kind::Paragraph};
    bool continues{false};  // goes on with the paragraph of the block before
    bool isJoined{false};
    int indent{0};
    int quotes{0};
    int headingLevel{0};
    QString mark{};
    std::optional<bool> task{};
    Qt::Alignment alignment{};
  };
  struct Piece {
    int start{0};
    int length{0};
    QTextCharFormat format;
    QString replacement;  // for an image
  };

  [[nodiscard]] Facts factsOf(const QTextBlock& block) const;
  void removeEmptyBlocks();
  void takeLineMarks(const QTextBlock& block);
  void styleCharacters(const QTextBlock& block, const Facts& facts);
  [[nodiscard]] QTextCharFormat charactersFor(const QTextCharFormat& read, const Facts& facts) const;
  void linkTags(const QTextBlock& block);
  void styleBlock(const QTextBlock& block, const Facts& facts, const Facts& before);
  [[nodiscard]] double spaceBetween(const Facts& before, const Facts& here) const;
  void styleTables();

  QTextDocument& m_document;
  EntryLook m_look;
  QColor m_linkColor;
  QTextCursor m_cursor;
  int m_tagsLeft;
};

}  // namespace quillo
