#include "journal/reading/EntryStyler.h"

#include "controls/Fonts.h"
#include "journal/reading/EntryFormat.h"
#include "journal/reading/MarkdownSource.h"
#include "qlcore/Hashtags.h"

#include <QRegularExpression>
#include <QTextList>
#include <QTextTable>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In parts of the font's size.
constexpr double lineHeight = 1.6;
constexpr double codeLineHeight = 1.4;
constexpr double paragraphSpace = 0.875;
constexpr double itemSpace = 0.2;
constexpr double indentWidth = 1.6;
constexpr double codePadding = 0.7;
constexpr double codeSize = 0.875;

// Each is a change of the document.
constexpr int mostTags = 2000;

double headingSize(int level) {
  constexpr std::array sizes{1.5, 1.25, 1.125};
  return level <= static_cast<int>(sizes.size()) ? sizes[static_cast<size_t>(level) - 1] : 1.0;
}

double luminance(const QColor& color) {
  const auto linear = [](double part) { return part <= 0.04 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

// A desktop of high contrast may have a selection colour that cannot be read as text.
QColor linkColor(const JournalColors& colors) {
  const double one = luminance(colors.accent);
  const double other = luminance(colors.paper);
  const double contrast = (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
  return contrast < 3 ? colors.text : colors.accent;
}

bool isSafeLink(const QString& href) {
  const QString scheme = QUrl(href).scheme();
  return scheme == u"http" || scheme == u"https" || scheme == u"mailto";
}

bool isCode(const QTextBlock& block) {
  return block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

bool isRule(const QTextBlock& block) {
  return block.blockFormat().hasProperty(QTextFormat::BlockTrailingHorizontalRulerWidth);
}

// Both signs that stand around an ordered item's own number, and the number.
const QRegularExpression& ownNumber() {
  static const QRegularExpression pattern(u"%1([0-9]{1,9}[.)])%1[ \\t]*"_s.arg(lineMark));
  return pattern;
}

}  // namespace

EntryStyler::EntryStyler(QTextDocument& document, const EntryLook& look)
    : m_document(document),
      m_look(look),
      m_linkColor(linkColor(look.colors)),
      m_cursor(&document),
      m_tagsLeft(mostTags) {}

void EntryStyler::run() {
  // Before anything is changed: taking an item out of its list gives those behind it other numbers.
  removeEmptyBlocks();
  QList<Facts> facts;
  for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) facts << factsOf(block);

  m_cursor.beginEditBlock();
  Facts before{.kind = Kind::Nothing};
  qsizetype at = 0;
  for (QTextBlock block = m_document.begin(); block.isValid() && at < facts.size(); block = block.next(), ++at) {
    takeLineMarks(block);
    styleCharacters(block, facts[at]);
    if (facts[at].kind != Kind::Code) linkTags(block);
    styleBlock(block, facts[at], before);
    before = facts[at];
  }
  styleTables();
  m_cursor.endEditBlock();
}

// The reader may begin a table's first cell with a block too many.
void EntryStyler::removeEmptyBlocks() {
  for (QTextFrame* frame : m_document.rootFrame()->childFrames()) {
    const auto* table = qobject_cast<QTextTable*>(frame);
    if (!table) continue;
    const QTextTableCell cell = table->cellAt(0, 0);
    m_cursor = cell.firstCursorPosition();
    if (m_cursor.block().length() == 1 && cell.lastPosition() > cell.firstPosition()) m_cursor.deleteChar();
  }
}

EntryStyler::Facts EntryStyler::factsOf(const QTextBlock& block) const {
  Facts facts;
  const QTextBlockFormat format = block.blockFormat();
  const QTextList* list = block.textList();
  const QRegularExpressionMatch number = ownNumber().match(block.text(), 0, QRegularExpression::NormalMatch,
                                                           QRegularExpression::AnchorAtOffsetMatchOption);
  facts.continues = !number.hasMatch() && block.text().startsWith(lineMark);
  facts.isJoined = format.boolProperty(EntryFormat::Joined);
  facts.indent = format.indent() + (list ? list->format().indent() : 0);
  facts.quotes = format.intProperty(QTextFormat::BlockQuoteLevel);
  facts.headingLevel = format.headingLevel();
  facts.alignment = format.alignment() & Qt::AlignHorizontal_Mask;
  if (QTextCursor(block).currentTable()) {
    facts.kind = Kind::Cell;
  } else if (isRule(block)) {
    facts.kind = Kind::Rule;
  } else if (isCode(block)) {
    facts.kind = Kind::Code;
  } else if (facts.headingLevel > 0) {
    facts.kind = Kind::Heading;
  } else if (list && !facts.continues) {
    facts.kind = Kind::Item;
    const bool isOrdered = list->format().style() <= QTextListFormat::ListDecimal;
    // The reader leaves the last task's box on whatever follows, so it counts only in a list.
    if (format.marker() != QTextBlockFormat::MarkerType::NoMarker)
      facts.task = format.marker() == QTextBlockFormat::MarkerType::Checked;
    else if (isOrdered)
      facts.mark = number.hasMatch() ? number.captured(1) : list->itemText(block);
    else
      facts.mark = facts.indent % 2 == 1 ? u"\u2022"_s : u"\u25E6"_s;
  }
  return facts;
}

void EntryStyler::takeLineMarks(const QTextBlock& block) {
  // From the end, so that what is still to be taken keeps its place.
  for (qsizetype at = block.text().lastIndexOf(lineMark); at >= 0; at = block.text().lastIndexOf(lineMark)) {
    const QString text = block.text();
    qsizetype start = at;
    qsizetype end = at + 1;
    const qsizetype opening = at > 0 ? text.lastIndexOf(lineMark, at - 1) : -1;
    if (opening >= 0 && opening >= at - 11) {
      const QRegularExpressionMatch number = ownNumber().match(text, opening, QRegularExpression::NormalMatch,
                                                               QRegularExpression::AnchorAtOffsetMatchOption);
      if (number.hasMatch()) {
        start = opening;
        end = opening == 0 ? number.capturedEnd() : end;
      }
    }
    m_cursor.setPosition(block.position() + static_cast<int>(start));
    m_cursor.setPosition(block.position() + static_cast<int>(end), QTextCursor::KeepAnchor);
    m_cursor.removeSelectedText();
  }
  // The blanks that made the line break.
  if (isCode(block) && block.text().endsWith(u"  ")) {
    m_cursor.setPosition(block.position() + block.length() - 3);
    m_cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
    m_cursor.removeSelectedText();
  }
}

QTextCharFormat EntryStyler::charactersFor(const QTextCharFormat& read, const Facts& facts) const {
  const JournalColors& colors = m_look.colors;
  QTextCharFormat format;
  format.setForeground(facts.quotes > 0 ? blended(colors.text, colors.dim, 0.55) : colors.text);
  if (read.fontItalic()) format.setFontItalic(true);
  if (read.fontStrikeOut()) format.setFontStrikeOut(true);
  if (read.fontWeight() > QFont::Medium) format.setFontWeight(QFont::DemiBold);
  double size = 1;
  if (facts.kind == Kind::Heading) {
    size = headingSize(facts.headingLevel);
    format.setFontWeight(QFont::DemiBold);
  }
  if (facts.kind == Kind::Code || read.fontFixedPitch()) {
    size *= codeSize;
    format.setFontFamilies({u"DejaVu Sans Mono"_s, u"Noto Sans Mono"_s, u"monospace"_s});
    format.setFontFixedPitch(true);
    if (facts.kind != Kind::Code) format.setProperty(EntryFormat::CodeSpan, true);
  }
  if (size != 1) format.setProperty(QTextFormat::FontPixelSize, qRound(m_look.fontSize * size));
  if (read.isImageFormat()) {
    format.setFontItalic(true);
    format.setForeground(colors.dim);
  }
  if (read.isAnchor() && isSafeLink(read.anchorHref())) {
    format.setAnchor(true);
    format.setAnchorHref(read.anchorHref());
    format.setForeground(m_linkColor);
    format.setFontUnderline(true);
  }
  return format;
}

void EntryStyler::styleCharacters(const QTextBlock& block, const Facts& facts) {
  QList<Piece> pieces;
  for (auto at = block.begin(); !at.atEnd(); ++at) {
    const QTextFragment fragment = at.fragment();
    const QTextCharFormat read = fragment.charFormat();
    const QString alternative = read.isImageFormat() ? read.stringProperty(QTextFormat::ImageAltText) : QString();
    pieces.append({fragment.position(), fragment.length(), charactersFor(read, facts), alternative});
  }
  for (qsizetype at = pieces.size() - 1; at >= 0; --at) {
    const Piece& piece = pieces[at];
    m_cursor.setPosition(piece.start);
    m_cursor.setPosition(piece.start + piece.length, QTextCursor::KeepAnchor);
    if (piece.replacement.isEmpty())
      m_cursor.setCharFormat(piece.format);
    else
      m_cursor.insertText(piece.replacement, piece.format);
  }
  m_cursor.setPosition(block.position());
  m_cursor.setBlockCharFormat(charactersFor({}, facts));
}

void EntryStyler::linkTags(const QTextBlock& block) {
  const QString text = block.text();
  if (!text.contains(u'#')) return;
  for (const HashtagRange& tag : hashtagRanges(text)) {
    if (m_tagsLeft == 0) return;
    const int start = block.position() + static_cast<int>(tag.start);
    const int end = start + static_cast<int>(tag.length);
    bool isFree = true;
    // The format at a position is that of the character before it.
    for (int at = start + 1; at <= end && isFree; ++at) {
      m_cursor.setPosition(at);
      const QTextCharFormat format = m_cursor.charFormat();
      isFree = !format.isAnchor() && !format.boolProperty(EntryFormat::CodeSpan);
    }
    if (!isFree) continue;
    --m_tagsLeft;
    QTextCharFormat format;
    if (m_look.linksTags) {
      QUrl link;
      link.setScheme(u"tag"_s);
      link.setPath(text.mid(tag.start + 1, tag.length - 1));
      format.setAnchor(true);
      format.setAnchorHref(link.toString(QUrl::FullyEncoded));
    }
    format.setForeground(m_linkColor);
    if (m_linkColor == m_look.colors.text) format.setFontUnderline(true);
    m_cursor.setPosition(start);
    m_cursor.setPosition(end, QTextCursor::KeepAnchor);
    m_cursor.mergeCharFormat(format);
  }
}

double EntryStyler::spaceBetween(const Facts& before, const Facts& here) const {
  if (before.kind == Kind::Nothing) return here.kind == Kind::Code ? codePadding : 0;
  if (here.isJoined || here.kind == Kind::Cell) return 0;
  if (here.kind == Kind::Code && before.kind == Kind::Code) return 0;
  double space = paragraphSpace;
  const bool followsWords = before.kind == Kind::Paragraph || before.kind == Kind::Item;
  if (here.kind == Kind::Paragraph && here.continues && followsWords && before.quotes == here.quotes)
    space = 0;
  else if (here.kind == Kind::Item && (before.kind == Kind::Item || before.indent > 0) && before.quotes == here.quotes)
    space = itemSpace;
  else if (here.kind == Kind::Heading)
    space = 1.4;
  else if (before.kind == Kind::Heading)
    space = 0.4;
  if (here.kind == Kind::Code) space += codePadding;
  if (before.kind == Kind::Code) space += codePadding;
  return space;
}

void EntryStyler::styleBlock(const QTextBlock& block, const Facts& facts, const Facts& before) {
  const double size = m_look.fontSize;
  QTextBlockFormat format;
  double height = lineHeight * size;
  if (facts.kind == Kind::Heading) height = std::max(1.35 * headingSize(facts.headingLevel), 1.5) * size;
  if (facts.kind == Kind::Code) height = codeLineHeight * codeSize * size;
  if (facts.kind == Kind::Rule) height = size;
  if (facts.kind == Kind::Cell) height = 1.4 * size;
  format.setLineHeight(std::round(height * 10) / 10, QTextBlockFormat::FixedHeight);
  format.setTopMargin(spaceBetween(before, facts) * size);
  if (facts.kind == Kind::Code && !isCode(block.next())) format.setBottomMargin(codePadding * size);
  if (facts.kind == Kind::Cell) format.setAlignment(facts.alignment);
  if (facts.headingLevel > 0) format.setHeadingLevel(facts.headingLevel);
  if (facts.quotes > 0) format.setProperty(QTextFormat::BlockQuoteLevel, facts.quotes);
  if (facts.kind == Kind::Rule) format.setProperty(EntryFormat::Rule, true);
  if (facts.isJoined) format.setProperty(EntryFormat::Joined, true);
  if (!facts.mark.isEmpty()) format.setProperty(EntryFormat::ListMark, facts.mark);
  if (facts.task) format.setProperty(EntryFormat::TaskMark, *facts.task);
  double margin = (facts.indent + facts.quotes) * indentWidth * size;
  if (facts.kind == Kind::Code) {
    // Code is written from the left whatever words it has.
    format.setProperty(EntryFormat::Code, true);
    format.setLayoutDirection(Qt::LeftToRight);
    format.setRightMargin(codePadding * size);
    margin += codePadding * size;
  }
  if (block.textDirection() == Qt::RightToLeft && facts.kind != Kind::Code)
    format.setRightMargin(margin);
  else
    format.setLeftMargin(margin);
  m_cursor.setPosition(block.position());
  m_cursor.setBlockFormat(format);
}

void EntryStyler::styleTables() {
  const double size = m_look.fontSize;
  for (QTextFrame* frame : m_document.rootFrame()->childFrames()) {
    auto* table = qobject_cast<QTextTable*>(frame);
    if (!table) continue;
    QTextTableFormat format;
    format.setBorder(1);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(m_look.colors.line);
    format.setBorderCollapse(true);
    format.setCellPadding(std::round(0.4 * size));
    format.setCellSpacing(0);
    const QTextBlock before = m_document.findBlock(table->firstPosition() - 1);
    const bool followsCode = before.blockFormat().boolProperty(EntryFormat::Code);
    format.setTopMargin(std::round((paragraphSpace + (followsCode ? codePadding : 0)) * size));
    format.setHeaderRowCount(1);
    format.setColumns(table->columns());
    table->setFormat(format);
    for (int column = 0; column < table->columns(); ++column) {
      const QTextTableCell cell = table->cellAt(0, column);
      QTextCharFormat bold;
      bold.setFontWeight(QFont::DemiBold);
      m_cursor.setPosition(cell.firstPosition());
      m_cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
      m_cursor.mergeCharFormat(bold);
      // The reader aligns all rows but the head's.
      if (table->rows() < 2) continue;
      QTextBlockFormat aligned;
      aligned.setAlignment(table->cellAt(1, column).firstCursorPosition().blockFormat().alignment());
      m_cursor.mergeBlockFormat(aligned);
    }
  }
}

QTextBlockFormat EntryStyler::headingFormat(double size, double space) const {
  QTextBlockFormat format;
  format.setProperty(EntryFormat::Heading, true);
  format.setTopMargin(std::round(space));
  format.setLineHeight(std::round(size * 1.35), QTextBlockFormat::FixedHeight);
  return format;
}

QTextCharFormat EntryStyler::headingCharacters(double size, QFont::Weight weight, const QColor& color) const {
  QTextCharFormat format;
  format.setProperty(QTextFormat::FontPixelSize, qRound(size));
  format.setFontWeight(weight);
  format.setForeground(color);
  return format;
}

}  // namespace quillo
