#include "exchange/RedNotebookMarkup.h"

#include <QList>
#include <QRegularExpression>
#include <QStringList>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Stands in a line for a piece that is not to be touched. No text has it: it is no character.
constexpr QChar keptPiece{0xFDD0};

// A target with spaces or brackets in it needs marks around it.
QString target(const QString& url) {
  static const QRegularExpression plain(u"^[^\\s()<>]+$"_s);
  if (plain.match(url).hasMatch()) return url;
  return u'<' + QString(url).replace(u'<', u"%3C"_s).replace(u'>', u"%3E"_s) + u'>';
}

QString image(QString path) {
  // Its width may stand behind it.
  static const QRegularExpression width(u"\\?\\d+$"_s);
  return u"![]("_s + target(path.remove(width)) + u')';
}

// One of the pieces of a line in which nothing else is formatting, as Markdown.
QString pieceAsMarkdown(const QRegularExpressionMatch& match) {
  const auto has = [&match](QStringView name) { return match.capturedLength(name) > 0; };
  if (has(u"image")) return image(match.captured(u"image") + match.captured(u"ending"));
  if (has(u"picture")) return image(match.captured(u"picture"));
  if (has(u"url")) return u"[%1](%2)"_s.arg(match.captured(u"name"), target(match.captured(u"url")));
  if (has(u"raw")) return match.captured(u"raw");
  return match.captured();
}

// Replaces what stands between two marks of two signs, both of which touch a word. Goes through the line once: where a
// mark has no other behind it, no later one has.
QString withMarks(const QString& line, QStringView mark, QStringView markdown) {
  const auto isMarkAt = [&](qsizetype at) { return QStringView(line).sliced(at).startsWith(mark); };
  const auto is = [&line](qsizetype at, QChar c) { return at < line.size() && line[at] == c; };
  QString made;
  qsizetype start = 0;
  for (qsizetype open = 0; open + 2 < line.size(); ++open) {
    if (!isMarkAt(open) || line[open + 2].isSpace() || line[open + 2] == mark[0]) continue;
    qsizetype close = line.indexOf(mark, open + 3);
    while (close >= 0 && (line[close - 1].isSpace() || is(close + 2, mark[0]))) close = line.indexOf(mark, close + 1);
    if (close < 0) break;
    made += QStringView(line).sliced(start, open - start);
    made += markdown;
    made += QStringView(line).sliced(open + 2, close - open - 2);
    made += markdown;
    start = close + 2;
    open = close + 1;
  }
  made += QStringView(line).sliced(start);
  return made;
}

// Names, links and the like first: the address of a page may hold every mark.
QString inlineAsMarkdown(QString line) {
  if (line.contains(keptPiece)) return line;
  static const QRegularExpression colour(u"\\{([^{}|]*)\\|color:[^{}|]*\\}"_s);
  line.replace(colour, u"\\1"_s);
  static const QRegularExpression pieces(
      u"``.+?``"
      "|\\[\"\"(?<image>[^\"\\]]+)\"\"(?<ending>\\.\\w{1,5}(?:\\?\\d+)?)\\]"
      "|\\[(?<picture>[^\\s\"\\[\\]]+\\.(?:png|jpe?g|gif|eps|bmp|svg)(?:\\?\\d+)?)\\]"
      "|\\[(?<name>[^\\[\\]\"]*[^\\[\\]\"\\s])\\s+\"\"(?<url>[^\"]+)\"\"\\]"
      "|\"\"(?<raw>.+?)\"\""
      "|\\b[a-zA-Z][a-zA-Z0-9+.-]{1,20}://[^\\s\"\\]]+"
      "|(?<![\\w])#[\\w-]+"_s,
      QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
  QStringList kept;
  QString rest;
  qsizetype end = 0;
  auto matches = pieces.globalMatch(line);
  // Bounded by the length of the line.
  while (matches.hasNext()) {
    const auto match = matches.next();
    rest += QStringView(line).sliced(end, match.capturedStart() - end);
    rest += keptPiece;
    kept << pieceAsMarkdown(match);
    end = match.capturedEnd();
  }
  rest += QStringView(line).sliced(end);
  rest = withMarks(withMarks(rest, u"//", u"*"), u"--", u"~~");
  static const QRegularExpression lineBreak(u"\\\\\\\\(?:\\s+|$)"_s);
  rest = withMarks(rest, u"__", u"_").replace(lineBreak, u"  \n"_s);
  QString whole;
  auto next = kept.cbegin();
  for (const QChar c : rest) whole += c == keptPiece ? *next++ : QString(c);
  // The line's own end breaks it.
  if (whole.endsWith(u'\n')) whole.chop(1);
  return whole;
}

// Lists within each other, whose items Markdown wants below the words of the item above.
class Lists {
 public:
  // The line of an item whose own is indented by so many columns.
  QString item(int indent, bool isNumbered, const QString& words) {
    while (!m_levels.isEmpty() && m_levels.last().indent > indent) m_levels.removeLast();
    const bool isNext = !m_levels.isEmpty() && m_levels.last().indent == indent;
    if (isNext && m_levels.last().isNumbered != isNumbered) m_levels.removeLast();
    if (m_levels.isEmpty() || m_levels.last().indent != indent) {
      const int column = m_levels.isEmpty() ? 0 : m_levels.last().wordsColumn;
      m_levels.append({indent, column, column, 0, isNumbered});
    }
    Level& level = m_levels.last();
    const QString mark = isNumbered ? QString::number(++level.count) + u". "_s : u"- "_s;
    level.wordsColumn = level.column + static_cast<int>(mark.size());
    return QString(level.column, u' ') + (words.isEmpty() ? mark.trimmed() : mark + words);
  }
  void end() { m_levels.clear(); }

 private:
  struct Level {
    int indent;
    int column;
    int wordsColumn;
    int count;
    bool isNumbered;
  };
  QList<Level> m_levels;
};

class Conversion {
 public:
  QString takeLine(const QString& line) {
    static const QRegularExpression heading(u"^\\s*(=+)([^=](?:.*[^=])?)\\1\\s*$"_s);
    static const QRegularExpression rule(u"^\\s*(?:={20,}|-{20,}|_{20,})\\s*$"_s);
    static const QRegularExpression item(u"^( *)([-+])(?: +(.*))?$"_s);
    const bool isFence =
        line.trimmed() == u"```" || (!m_isVerbatim && line.startsWith(u"```") && !line.startsWith(u"``` "));
    if (isFence) m_isVerbatim = !m_isVerbatim;
    if (isFence || m_isVerbatim) return line;
    if (const auto match = item.match(line); match.hasMatch() && isItem(match)) {
      m_emptyLines = 0;
      m_isAfterItem = true;
      return m_lists.item(static_cast<int>(match.capturedLength(1)), match.capturedView(2) == u"+",
                          inlineAsMarkdown(match.captured(3)));
    }
    endListAt(line);
    if (const auto match = heading.match(line); match.hasMatch() && match.capturedLength(1) <= 5)
      return QString(match.capturedLength(1), u'#') + u' ' + inlineAsMarkdown(match.captured(2).trimmed());
    // Of those signs Markdown would make a heading of the line above.
    if (rule.match(line).hasMatch()) return u"***"_s;
    return inlineAsMarkdown(line);
  }

 private:
  // A bare "+" is an item without words, as templates have them. A bare "-" is one only below others.
  bool isItem(const QRegularExpressionMatch& match) const {
    return match.capturedLength(3) > 0 || match.capturedView(2) == u"+" || m_isAfterItem;
  }
  // Two empty lines, or words that are not indented.
  void endListAt(const QString& line) {
    m_emptyLines = line.trimmed().isEmpty() ? m_emptyLines + 1 : 0;
    const bool isWords = !line.isEmpty() && !line[0].isSpace();
    m_isAfterItem = false;
    if (m_emptyLines > 1 || isWords) m_lists.end();
  }

  Lists m_lists;
  int m_emptyLines{0};
  bool m_isVerbatim{false};
  bool m_isAfterItem{false};
};

}  // namespace

QString markdownOfRedNotebook(const QString& text) {
  Conversion conversion;
  QStringList lines;
  for (const QString& line : text.split(u'\n')) lines << conversion.takeLine(line);
  return lines.join(u'\n');
}

}  // namespace quillo
