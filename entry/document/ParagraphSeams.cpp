#include "entry/document/ParagraphSeams.h"

#include <QScopedValueRollback>
#include <QTextBoundaryFinder>
#include <QTextDocument>

#include <algorithm>
#include <utility>

namespace quillo {

namespace {

constexpr int seamProperty = QTextFormat::UserProperty + 2;

// What a parted paragraph is cut into: half of the bounds, so that there is room to type.
constexpr qsizetype pieceLength = ParagraphSeams::longestBlock / 2;
constexpr qsizetype unbrokenPieceLength = ParagraphSeams::longestUnbroken / 2;
// Blocks that fit into these together become one again: between what a cut leaves and what is cut, so that neither
// follows from the other.
constexpr qsizetype longestJoined = ParagraphSeams::longestBlock * 3 / 4;
constexpr qsizetype longestUnbrokenJoined = ParagraphSeams::longestUnbroken * 3 / 4;
// How far from a wanted place the ends of a character are looked for; longer ones are nobody's writing.
constexpr qsizetype longestCharacter = 64;

QTextCharFormat seamFormat() {
  QTextCharFormat format;
  format.setProperty(seamProperty, true);
  return format;
}

// Whether no two places where a line may break lie further apart than `longest`.
bool breaksWithin(const QString& text, qsizetype longest) {
  if (text.size() <= longest) return true;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  qsizetype last = 0;
  for (qsizetype next = finder.toNextBoundary(); next >= 0; next = finder.toNextBoundary()) {
    if (next - last > longest) return false;
    last = next;
  }
  return true;
}

bool isTooLong(const QTextBlock& block) {
  const int length = block.length() - 1;
  if (length <= ParagraphSeams::longestUnbroken) return false;
  return length > ParagraphSeams::longestBlock || !breaksWithin(block.text(), ParagraphSeams::longestUnbroken);
}

// The last end of a character at or before `at`; where that is too far away, at least no surrogate pair is cut.
qsizetype characterEnd(const QString& text, qsizetype at) {
  const qsizetype from = std::max(qsizetype{0}, at - longestCharacter);
  const QString around = text.mid(from, 2 * longestCharacter);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, around);
  finder.setPosition(at - from);
  if (finder.isAtBoundary()) return at;
  const qsizetype end = finder.toPreviousBoundary();
  if (end > 0) return from + end;
  return text[at].isLowSurrogate() && text[at - 1].isHighSurrogate() ? at - 1 : at;
}

// Where a paragraph is cut, in order.
QList<qsizetype> placesOfSeams(const QString& text) {
  QList<qsizetype> places;
  qsizetype start = 0;      // of the piece
  qsizetype lastBreak = 0;  // where a line may break
  qsizetype lastSpace = 0;  // the same behind a space
  const auto cut = [&](qsizetype at) {
    start = characterEnd(text, at);
    places << start;
  };
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  // Every step goes forward in the text, and every cut is at least half of an unbroken piece behind the one before.
  for (qsizetype next = finder.toNextBoundary(); next >= 0; next = finder.toNextBoundary()) {
    for (qsizetype from = std::max(lastBreak, start); next - from > ParagraphSeams::longestUnbroken; from = start)
      cut(from + unbrokenPieceLength);
    if (next - start > pieceLength && text.size() - start > longestJoined)
      cut(lastSpace - start > pieceLength / 2 ? lastSpace : lastBreak);
    lastBreak = next;
    if (text[next - 1].isSpace()) lastSpace = next;
  }
  return places;
}

// An edit block that is opened by the first edit: an empty one would tell of a change, too.
class Edits {
 public:
  explicit Edits(QTextDocument& document) : m_cursor(&document) {}
  ~Edits() {
    if (m_isOpen) m_cursor.endEditBlock();
  }
  void begin() {
    if (!std::exchange(m_isOpen, true)) m_cursor.beginEditBlock();
  }

 private:
  QTextCursor m_cursor;
  bool m_isOpen{false};
};

bool isInsideCharacter(const QString& before, const QString& after) {
  const QString around = before.right(longestCharacter) + after.left(longestCharacter);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, around);
  finder.setPosition(std::min(before.size(), longestCharacter));
  return !finder.isAtBoundary();
}

}  // namespace

ParagraphSeams::ParagraphSeams(QTextDocument& document) : m_document(document) {
  connect(&document, &QTextDocument::contentsChange, this,
          [this](int position, int /*removed*/, int added) { touched(position, added); });
}

bool ParagraphSeams::isBefore(const QTextBlock& block) {
  return block.isValid() && block.position() > 0 && block.charFormat().hasProperty(seamProperty);
}

bool ParagraphSeams::cutsRunBefore(const QTextBlock& block) {
  if (!isBefore(block)) return false;
  const QTextDocument& document = *block.document();
  return !document.characterAt(block.position()).isSpace() && !document.characterAt(block.position() - 2).isSpace();
}

QTextBlock ParagraphSeams::firstBlock(QTextBlock block) {
  while (isBefore(block)) block = block.previous();
  return block;
}

QTextBlock ParagraphSeams::lastBlock(QTextBlock block) {
  while (isBehind(block)) block = block.next();
  return block;
}

QString ParagraphSeams::string() const {
  // toPlainText() would turn no-break spaces into spaces.
  QString text = m_document.toRawText();
  for (QChar& c : text)
    if (c == QChar::ParagraphSeparator || c == QChar::LineSeparator) c = u'\n';
  if (!hasSeams()) return text;
  QString whole;
  whole.reserve(text.size());
  qsizetype from = 0;
  for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
    if (block.charFormatIndex() != m_formatIndex || block.position() == 0) continue;
    whole += QStringView(text).sliced(from, block.position() - 1 - from);
    from = block.position();
  }
  return whole += QStringView(text).sliced(from);
}

QString ParagraphSeams::selectedString(const QTextCursor& selection) {
  QString text = selection.selectedText();
  const int start = selection.selectionStart();
  QTextBlock block = selection.document()->findBlock(selection.selectionEnd());
  // From the end, so that what was found stays where it is.
  for (; block.position() > start; block = block.previous())
    if (isBefore(block)) text.remove(block.position() - 1 - start, 1);
  return text;
}

void ParagraphSeams::touched(int position, int added) {
  if (m_isInserting || m_isArranging) return;
  const int end = position + added;
  // An earlier range that was not arranged lies elsewhere now; the first place is still right, and the end is near.
  m_touchedFrom = m_touchedFrom < 0 ? position : std::min(m_touchedFrom, position);
  m_touchedTo = std::max(m_touchedTo, end);
}

void ParagraphSeams::insert(QTextCursor& at, const QString& text) {
  const QScopedValueRollback inserting(m_isInserting, true);
  const int start = at.selectionStart();
  at.beginEditBlock();
  at.insertText(text);
  arrangeBlocks(start, at.position());
  at.endEditBlock();
}

void ParagraphSeams::arrange() {
  if (m_isArranging || m_touchedFrom < 0) return;
  const QScopedValueRollback arranging(m_isArranging, true);
  const int from = std::exchange(m_touchedFrom, -1);
  arrangeBlocks(from, std::exchange(m_touchedTo, -1));
}

// Each block of the range and the one behind it once; what a cut makes is not looked at again.
void ParagraphSeams::arrangeBlocks(int from, int to) {
  Edits edits(m_document);
  QTextCursor end(&m_document);
  end.setPosition(std::clamp(to, 0, m_document.characterCount() - 1));
  for (QTextBlock block = m_document.findBlock(from); block.isValid(); block = block.next()) {
    if (!isBefore(block) && block.blockFormat().hasProperty(seamProperty)) {
      // A line end has come into a paragraph that was parted, and another direction may do for what is behind it.
      edits.begin();
      QTextCursor(block).setBlockFormat({});
    }
    if (isToBeJoined(block)) {
      edits.begin();
      block = joined(block);
    }
    if (isTooLong(block)) {
      edits.begin();
      block = parted(block);
    }
    if (block.position() > end.position()) break;
  }
}

// Whether the block and the one before it in its paragraph are both short, or a character lies across the seam. No
// block may stay empty: what is typed there would take on the seam's format.
bool ParagraphSeams::isToBeJoined(const QTextBlock& block) const {
  if (!hasSeams() || !isBefore(block)) return false;
  const QString before = block.previous().text();
  const QString after = block.text();
  if (before.isEmpty() || after.isEmpty() || isInsideCharacter(before, after)) return true;
  return before.size() + after.size() <= longestJoined && breaksWithin(before + after, longestUnbrokenJoined);
}

QTextBlock ParagraphSeams::joined(const QTextBlock& block) {
  QTextCursor seam(block);
  seam.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
  seam.removeSelectedText();
  return seam.block();
}

// Answers the last piece.
QTextBlock ParagraphSeams::parted(const QTextBlock& block) {
  const int start = block.position();
  const Qt::LayoutDirection direction = block.textDirection();
  const QList<qsizetype> places = placesOfSeams(block.text());
  QTextCursor seam(&m_document);
  seam.setPosition(start);
  for (qsizetype i = 0; i < places.size(); ++i) {
    seam.setPosition(static_cast<int>(start + places[i] + i));
    seam.insertBlock(seam.blockFormat(), seamFormat());
    m_formatIndex = seam.block().charFormatIndex();
    // Or the block would take it from its own first letter.
    if (seam.block().textDirection() == direction) continue;
    QTextBlockFormat format = seam.blockFormat();
    format.setLayoutDirection(direction);
    format.setProperty(seamProperty, true);
    seam.setBlockFormat(format);
  }
  return seam.block();
}

}  // namespace quillo
