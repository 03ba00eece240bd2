#include "journal/reading/EntryDocument.h"

#include "controls/Fonts.h"
#include "journal/reading/EntryFormat.h"
#include "journal/reading/EntryStyler.h"
#include "journal/reading/MarkdownSource.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextOption>
#include <QUrl>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In UTF-16 units. Laying out one piece takes time by the square of its longest word and of its lines.
constexpr qsizetype longestPiece = 4096;
constexpr qsizetype longestWordPiece = 512;
constexpr int mostLinesOfPiece = 64;
constexpr qsizetype longestShown = qsizetype{4} * 1024 * 1024;

// The reader hands these to the parser as they are, and by themselves they would make underlined text of _slanted_
// text.
constexpr int underlines = 0x4000;
const auto markdownFeatures = QTextDocument::MarkdownFeatures::fromInt(
    (int{QTextDocument::MarkdownDialectGitHub} & ~underlines) | int{QTextDocument::MarkdownNoHTML});

// Where a piece of `text` that starts at `start` ends: behind a line break if there is one, else behind a blank, and
// inside a word that is far longer than a line.
qsizetype endOfPiece(const QString& text, qsizetype start) {
  const qsizetype limit = std::min(start + longestPiece, text.size());
  qsizetype behindLine = 0;
  qsizetype behindBlank = 0;
  int lines = 0;
  qsizetype at = start;
  for (qsizetype wordStart = start; at < limit && at - wordStart < longestWordPiece && lines < mostLinesOfPiece;) {
    const QChar c = text[at++];
    if (c == u' ' || c == u'\t') behindBlank = wordStart = at;
    if (c != u'\n') continue;
    behindLine = wordStart = at;
    ++lines;
  }
  if (at == text.size()) return at;
  if (behindLine > 0) return behindLine;
  if (behindBlank > 0) return behindBlank;
  return text[at - 1].isHighSurrogate() ? at - 1 : at;
}

}  // namespace

EntryDocument::EntryDocument(const EntryContent& content, const EntryLook& look, QObject* parent)
    : QTextDocument(parent), m_look(look) {
  setUndoRedoEnabled(false);
  setUseDesignMetrics(true);
  setDocumentMargin(0);
  setDefaultFont(textFont(look.fontSize));
  QTextOption option = defaultTextOption();
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  setDefaultTextOption(option);

  if (const std::optional<QString> markdown = markdownSource(content.text))
    setMarkdown(*markdown, markdownFeatures);
  else
    insertAsTyped(content.text);
  EntryStyler(*this, look).run();
  insertHeading(content);
}

QTextBlock EntryDocument::firstTextBlock() const {
  QTextBlock block = begin();
  while (block.isValid() && block.blockFormat().boolProperty(EntryFormat::Heading)) block = block.next();
  return block;
}

QVariant EntryDocument::loadResource(int, const QUrl&) {
  return {};
}

// A block a line would be too many blocks for the layout, and one block of a long line too much for it.
void EntryDocument::insertAsTyped(const QString& text) {
  QTextCursor cursor(this);
  cursor.beginEditBlock();
  QString clean = text.left(longestShown);
  clean.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n').replace(QChar::ParagraphSeparator, u'\n');
  clean.replace(lineMark, u' ').replace(QChar::ObjectReplacementCharacter, QChar::ReplacementCharacter);
  bool isJoined = false;
  for (qsizetype start = 0; start < clean.size();) {
    const qsizetype end = endOfPiece(clean, start);
    const bool endsLine = clean[end - 1] == u'\n';
    QTextBlockFormat format;
    if (isJoined) format.setProperty(EntryFormat::Joined, true);
    if (start == 0)
      cursor.setBlockFormat(format);
    else
      cursor.insertBlock(format, {});
    cursor.insertText(clean.mid(start, end - start - (endsLine ? 1 : 0)).replace(u'\n', QChar::LineSeparator));
    isJoined = !endsLine;
    start = end;
  }
  if (text.size() > longestShown) {
    cursor.insertBlock(QTextBlockFormat(), {});
    cursor.insertText(u"The rest of this entry is too long to be shown here."_s);
  }
  cursor.endEditBlock();
}

void EntryDocument::insertHeading(const EntryContent& content) {
  const EntryStyler styler(*this, m_look);
  QTextCursor cursor(this);
  cursor.beginEditBlock();
  // What stands first keeps its formats: a block is put before it, which is made the heading.
  const auto insertLine = [&cursor](const QString& text, const QTextBlockFormat& format,
                                    const QTextCharFormat& characters) {
    const QTextBlockFormat blockFormat = cursor.blockFormat();
    cursor.insertBlock(blockFormat, cursor.blockCharFormat());
    cursor.movePosition(QTextCursor::PreviousBlock);
    cursor.setBlockFormat(format);
    cursor.setBlockCharFormat(characters);
    cursor.insertText(text, characters);
    cursor.movePosition(QTextCursor::NextBlock);
  };
  const double size = m_look.fontSize;
  const bool hasTitle = !content.title.isEmpty();
  if (hasTitle)
    insertLine(content.title, styler.headingFormat(size * 1.375, 0),
               styler.headingCharacters(size * 1.375, QFont::DemiBold, m_look.colors.text));
  if (!content.details.isEmpty())
    insertLine(content.details, styler.headingFormat(size * 0.8125, size * 0.2),
               styler.headingCharacters(size * 0.8125, QFont::Normal, m_look.colors.dim));
  if (hasTitle || !content.details.isEmpty()) {
    QTextBlockFormat first = cursor.blockFormat();
    first.setTopMargin(first.topMargin() + size);
    cursor.setBlockFormat(first);
  }
  cursor.endEditBlock();
}

QString EntryDocument::plainText(int from, int to) const {
  QString text;
  for (QTextBlock block = findBlock(from); block.isValid() && block.position() < to; block = block.next()) {
    const QTextBlockFormat format = block.blockFormat();
    const int start = std::max(0, from - block.position());
    if (block.position() > from && !format.boolProperty(EntryFormat::Joined)) text += u'\n';
    if (start == 0) {
      if (const QString mark = format.stringProperty(EntryFormat::ListMark); !mark.isEmpty()) text += mark + u' ';
      if (format.hasProperty(EntryFormat::TaskMark))
        text += format.boolProperty(EntryFormat::TaskMark) ? u"[x] "_s : u"[ ] "_s;
      if (format.boolProperty(EntryFormat::Rule)) text += u"***"_s;
    }
    text += block.text().mid(start, to - block.position() - start);
  }
  return text.replace(QChar::LineSeparator, u'\n').replace(QChar::Nbsp, u' ');
}

QString tagOfLink(const QUrl& link) {
  return link.scheme() == u"tag" ? link.path(QUrl::FullyDecoded) : QString();
}

}  // namespace quillo
