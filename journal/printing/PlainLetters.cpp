#include "journal/printing/PlainLetters.h"

#include "journal/reading/EntryFormat.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace quillo {

namespace {

// Whether fonts draw it in another way beside certain others.
bool changesByNeighbours(const QString& text, qsizetype at) {
  const char16_t c = text[at].unicode();
  const auto isDigit = [&](qsizetype of) { return of >= 0 && of < text.size() && text[of].isDigit(); };
  if (c == u'x' || c == u'X') return isDigit(at - 1) && isDigit(at + 1);
  constexpr QStringView signs = u":-+*/\\<>=|~_@&!?#%^()[]{}\u00D7\u2013\u2014\u2022";
  return signs.contains(QChar(c));
}

// Letters of different formats are looked at each by itself.
void setApart(QTextCursor& cursor, const QTextBlock& block) {
  const QString text = block.text();
  bool isOdd = false;
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (!changesByNeighbours(text, at)) continue;
    isOdd = !isOdd;
    QTextCharFormat format;
    format.setProperty(EntryFormat::SetApart, isOdd ? 1 : 2);
    cursor.setPosition(block.position() + static_cast<int>(at));
    cursor.setPosition(block.position() + static_cast<int>(at) + 1, QTextCursor::KeepAnchor);
    // Code is in a face that leaves letters as they are.
    if (!cursor.charFormat().boolProperty(EntryFormat::CodeSpan)) cursor.mergeCharFormat(format);
  }
}

}  // namespace

void drawLettersPlainly(QTextDocument& document) {
  // With space between them, however little, letters are not drawn as pairs in scripts that can be written so.
  constexpr double leastSpace = 1.0 / 64;
  QFont font = document.defaultFont();
  font.setLetterSpacing(QFont::AbsoluteSpacing, leastSpace);
  document.setDefaultFont(font);
  QTextCursor cursor(&document);
  cursor.beginEditBlock();
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    if (!block.blockFormat().boolProperty(EntryFormat::Code)) setApart(cursor, block);
  cursor.endEditBlock();
}

}  // namespace quillo
