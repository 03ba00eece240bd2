#include "journal/reading/MarkdownSource.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In UTF-16 units or pieces. A written diary stays far below all of them.
constexpr qsizetype longestText = 256 * 1024;
constexpr qsizetype longestWord = 2000;
constexpr int mostMarks = 12000;
constexpr int mostMarksInParagraph = 1500;
constexpr int mostItems = 2000;
constexpr int mostCells = 3000;
constexpr int mostLines = 20000;
constexpr int deepestNesting = 12;
constexpr qsizetype deepestIndent = 80;

constexpr QStringView blanks = u" \t";

// Where a line's own words begin: behind its indent and the signs of quotes.
struct LineStart {
  qsizetype content{0};
  int quotes{0};
};

LineStart startOf(QStringView line) {
  LineStart start;
  for (; start.content < line.size(); ++start.content) {
    if (line[start.content] == u'>')
      ++start.quotes;
    else if (!blanks.contains(line[start.content]))
      break;
  }
  return start;
}

bool isBlankAt(QStringView text, qsizetype at) {
  return at >= text.size() || blanks.contains(text[at]);
}

// The length of a number with its '.' or ')' at the start of an ordered item; 0 for none.
qsizetype numberLength(QStringView content) {
  qsizetype digits = 0;
  while (digits < content.size() && digits < 9 && content[digits] >= u'0' && content[digits] <= u'9') ++digits;
  const bool isNumber = digits > 0 && digits < content.size() && (content[digits] == u'.' || content[digits] == u')');
  return isNumber && isBlankAt(content, digits + 1) && digits + 1 < content.size() ? digits + 1 : 0;
}

bool isBullet(QStringView content) {
  return !content.isEmpty() && u"-+*"_s.contains(content[0]) && isBlankAt(content, 1);
}

bool consistsOf(QStringView text, QStringView characters) {
  return std::all_of(text.begin(), text.end(), [characters](QChar c) { return characters.contains(c); });
}

// Whether the line can only be words: a mark before them changes nothing of what the line is.
bool isProse(QStringView content) {
  if (content.isEmpty() || isBullet(content) || numberLength(content) > 0) return false;
  if (content.startsWith(u"```") || content.startsWith(u"~~~") || content.startsWith(u'|')) return false;
  if (content.startsWith(u'[') && content.contains(u"]:")) return false;
  if (consistsOf(content, u"-*_=+:| \t")) return false;
  qsizetype hashes = 0;
  while (hashes < content.size() && content[hashes] == u'#') ++hashes;
  return hashes == 0 || hashes > 6 || !isBlankAt(content, hashes);
}

// Counts what makes the reader slow.
class Budget {
 public:
  bool takes(QStringView line, const LineStart& start, bool isItem) {
    const QStringView content = line.mid(start.content);
    if (content.isEmpty()) m_marksInParagraph = 0;
    if (start.quotes > deepestNesting || start.content > deepestIndent) return false;
    if (isItem) ++m_items;
    ++m_lines;
    int nesting = 0;
    qsizetype word = 0;
    bool atStart = true;
    for (const QChar c : content) {
      word = blanks.contains(c) ? 0 : word + 1;
      if (word > longestWord) return false;
      // Markers of items and quotes one after the other: each opens one more level.
      if (atStart && u"-+*>"_s.contains(c)) ++nesting;
      if (!blanks.contains(c) && !u"-+*>.)0123456789"_s.contains(c)) atStart = false;
      if (c == u'|') ++m_cells;
      if (u"*_~`[]<&\\|#@"_s.contains(c) || (c == u':' || c == u'.')) ++m_marksInParagraph, ++m_marks;
    }
    const bool isRule = consistsOf(content, u"-*_=+ \t");
    return (isRule || nesting <= deepestNesting) && m_marksInParagraph <= mostMarksInParagraph &&
           m_marks <= mostMarks && m_items <= mostItems && m_cells <= mostCells && m_lines <= mostLines;
  }

 private:
  int m_marks{0};
  int m_marksInParagraph{0};
  int m_items{0};
  int m_cells{0};
  int m_lines{0};
};

// The line under a table's head, as the reader wants it: three dashes a column at the least.
QString widenedDelimiters(const QString& line) {
  static const QRegularExpression dashes(u"-+"_s);
  return QString(line).replace(dashes, u"---"_s);
}

QString preparedLine(const QString& line, const LineStart& start, bool followsText) {
  const QStringView content = QStringView(line).mid(start.content);
  if (content.isEmpty()) return line;
  QString prepared = line;
  if (const qsizetype number = numberLength(content); number > 0) {
    const QString own = lineMark + content.left(number).toString() + lineMark;
    prepared.insert(start.content + number + 1, own);
  } else if (content.contains(u'|') && content.contains(u'-') && consistsOf(content, u"-:| \t")) {
    prepared = widenedDelimiters(line);
  } else if (followsText && isProse(content)) {
    prepared.insert(start.content, lineMark);
  }
  // Two blanks at the end make a line break of the line's end.
  return prepared.endsWith(u'\\') ? prepared : prepared + u"  "_s;
}

}  // namespace

std::optional<QString> markdownSource(const QString& text) {
  if (text.size() > longestText) return {};
  QString clean = text;
  clean.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n').replace(QChar::Null, QChar::ReplacementCharacter);
  clean.replace(lineMark, u' ').replace(QChar::LineSeparator, u'\n').replace(QChar::ParagraphSeparator, u'\n');
  clean.replace(QChar::ObjectReplacementCharacter, QChar::ReplacementCharacter);

  Budget budget;
  QString source;
  source.reserve(clean.size() + clean.size() / 8);
  bool followsText = false;
  for (const QString& line : clean.split(u'\n')) {
    const LineStart start = startOf(line);
    const QStringView content = QStringView(line).mid(start.content);
    if (!budget.takes(line, start, isBullet(content) || numberLength(content) > 0)) return {};
    source += preparedLine(line, start, followsText) + u'\n';
    followsText = !content.isEmpty();
  }
  return source;
}

}  // namespace quillo
