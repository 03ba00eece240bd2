#include "journal/reading/EntryDocument.h"
#include "journal/reading/EntryFormat.h"
#include "journal/reading/WordMatches.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QUrl>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

EntryLook lightLook() {
  return {.colors = JournalColors::forPalette(QPalette(QColor(0xef, 0xef, 0xef))), .fontSize = 16};
}

// The document in short: a line a block, "h2:" before headings, ">" a level of quote, "|" before code, "---" for a
// rule,
// "+" where a line goes on with the paragraph above; /slanted/, *bold*, `code`, and [links](to) but for tags: {tag}.
QString outline(const QString& text) {
  const EntryDocument document({{}, {}, text}, lightLook());
  QStringList lines;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    const QTextBlockFormat format = block.blockFormat();
    QString line;
    if (block != document.begin() && format.topMargin() == 0 && !format.boolProperty(EntryFormat::Code)) line += u'+';
    line += QString(format.intProperty(QTextFormat::BlockQuoteLevel), u'>');
    if (format.headingLevel() > 0) line += u"h%1:"_s.arg(format.headingLevel());
    if (format.boolProperty(EntryFormat::Code)) line += u'|';
    if (format.boolProperty(EntryFormat::Rule)) line += u"---"_s;
    line += format.stringProperty(EntryFormat::ListMark);
    if (format.hasProperty(EntryFormat::TaskMark)) line += format.boolProperty(EntryFormat::TaskMark) ? u'x' : u'o';
    for (auto at = block.begin(); !at.atEnd(); ++at) {
      const QTextCharFormat characters = at.fragment().charFormat();
      QString part = at.fragment().text();
      const bool isBold = characters.fontWeight() > QFont::Medium && format.headingLevel() == 0;
      if (characters.boolProperty(EntryFormat::CodeSpan)) part = u'`' + part + u'`';
      if (characters.fontItalic()) part = u'/' + part + u'/';
      if (isBold) part = u'*' + part + u'*';
      const QString tag = tagOfLink(QUrl(characters.anchorHref()));
      if (!tag.isEmpty())
        part = u'{' + tag + u'}';
      else if (characters.isAnchor())
        part = u"[%1](%2)"_s.arg(part, characters.anchorHref());
      line += part;
    }
    lines << line;
  }
  return lines.join(u'\n');
}

TEST(EntryDocumentTest, DrawsWhatWasWritten) {
  const struct {
    QString text;
    QString outline;
  } cases[] = {
      {u""_s, u""_s},
      {u"one\ntwo\n\nthree"_s, u"one\n+two\nthree"_s},
      {u"one\r\ntwo"_s, u"one\n+two"_s},
      {u"# A day\nwords\n## 2\nLate\n===="_s, u"h1:A day\nwords\nh2:2\nh1:Late"_s},
      {u"*a* __b__ `c  d` **e.**\n*f*\n_g_"_s, u"/a/ *b* `c  d` *e.*\n+/f/\n+/g/"_s},
      {u"> a\n> b\n> > c"_s, u">a\n+>b\n>>c"_s},
      {u"- a\n  b\n  - c\n- [ ] d\n- [x] e\n\nend"_s, u"\u2022a\n+b\n\u25E6c\nod\nxe\nend"_s},
      {u"5. a\n7. b\n9) c"_s, u"5.a\n7.b\n9)c"_s},
      {u"```\n5. a  \n  #b\n\nc\n```\nd"_s, u"|5. a  \n|  #b\n|\n|c\nd"_s},
      {u"a\n\n***\n\nb"_s, u"a\n---\nb"_s},
      {u"#walk, (#caf\u00E9-au) a#b `#c` #1"_s, u"{walk}, ({caf\u00E9-au}) a#b `#c` #1"_s},
      {u"**#bold**"_s, u"{bold}"_s},
      {u"[a #b](https://x.y) www.z.org/#c"_s, u"[a #b](https://x.y) [www.z.org/#c](http://www.z.org/#c)"_s},
      {u"[a](file:///etc/passwd) [b](javascript:x) [c](tag:d)"_s, u"a b c"_s},
      {u"<b>a</b> <img src=\"x\"> &amp;\n<script>\nb\n</script>"_s,
       u"<b>a</b> <img src=\"x\"> &\n+<script>\n+b\n+</script>"_s},
      {u"x ![the *old* pond](/etc/hostname) y"_s, u"x /the old pond/ y"_s},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(outline(text).toStdString(), expected.toStdString()) << text.toStdString();
}

TEST(EntryDocumentTest, DrawsATableWithItsColumnsAligned) {
  const EntryDocument document({{}, {}, u"```\nx\n```\n\n|a|b|\n|-|-:|\n|1|#t|\n\nend"_s}, lightLook());
  QStringList cells;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    if (QTextCursor(block).currentTable())
      cells << block.text() + (block.blockFormat().alignment() & Qt::AlignRight ? u">"_s : u""_s);
  EXPECT_EQ(cells, (QStringList{u"a"_s, u"b>"_s, u"1"_s, u"#t>"_s}));
}

TEST(EntryDocumentTest, KeepsWhatStandsFirstAsItIsUnderTheHeading) {
  for (const QString& text : {u"- item"_s, u"# Head"_s, u"```\ncode\n```"_s, u"> quote"_s, u"plain"_s}) {
    const EntryDocument bare({{}, {}, text}, lightLook());
    const EntryDocument headed({u"Friday"_s, u"Berlin"_s, text}, lightLook());
    QTextBlockFormat expected = bare.begin().blockFormat();
    QTextBlockFormat format = headed.firstTextBlock().blockFormat();
    expected.clearProperty(QTextFormat::BlockTopMargin);
    format.clearProperty(QTextFormat::BlockTopMargin);
    EXPECT_EQ(headed.begin().text(), u"Friday"_s);
    EXPECT_EQ(headed.begin().next().text(), u"Berlin"_s);
    EXPECT_TRUE(format == expected) << text.toStdString();
  }
}

TEST(EntryDocumentTest, GivesEachLineItsOwnDirection) {
  const EntryDocument document({{}, {}, u"left\n\u05D9\u05DE\u05D9\u05DF\n\n> \u05D9\u05DE\u05D9\u05DF"_s},
                               lightLook());
  QList<Qt::LayoutDirection> directions;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) directions << block.textDirection();
  EXPECT_EQ(directions, (QList{Qt::LeftToRight, Qt::RightToLeft, Qt::RightToLeft}));
  EXPECT_GT(document.lastBlock().blockFormat().rightMargin(), 0);
}

// Texts that take minutes where they are read or laid out without limits.
TEST(EntryDocumentTest, ShowsHostileTexts) {
  constexpr qsizetype mebibyte = 1024 * 1024;
  QString stair;
  for (int depth = 0; stair.size() < 60000; ++depth) stair += QString(depth, u' ') + u"- x\n"_s;
  QStringList texts{stair, u"a|b\n-|-\n"_s + u"1|2\n"_s.repeated(20000), QString(mebibyte, QChar::Null)};
  for (const QString& piece : {u">"_s, u"["_s, u"*"_s, u"a"_s, u"\n"_s, u"word "_s, u"\u205F"_s})
    texts << piece.repeated(mebibyte / piece.size());
  for (const QString& piece :
       {u">"_s, u"["_s, u"*"_s, u"`a``b"_s, u"[a](b) "_s, u"![a](b)"_s, u"&lt;"_s, u"- "_s, u"- a\n"_s, u"*a* b "_s,
        u"a"_s, u"#a "_s, u"#a"_s, u"> "_s, u"www.a.b "_s, u"\u0301"_s, u"1. a\n"_s, u"\u205F1.\u205F"_s})
    texts << piece.repeated(60000 / piece.size());
  for (const QString& text : texts) {
    EntryDocument document({u"Friday"_s, u"Berlin"_s, text}, lightLook());
    document.setTextWidth(480);
    EXPECT_GT(document.size().height(), 0) << text.left(20).toStdString();
  }
}

TEST(EntryDocumentTest, GivesALongTextBackAsItWasTyped) {
  const QString text = u"word "_s.repeated(2000) + u"\n\n"_s + u"x"_s.repeated(9000) + u"\nend"_s;
  const EntryDocument document({{}, {}, text}, lightLook());
  EXPECT_GT(document.blockCount(), 3);
  EXPECT_EQ(document.plainText(0, document.characterCount()), text);
}

TEST(WordMatchesTest, FindsWordsByTheirBeginning) {
  const struct {
    QString text;
    QStringList words;
    QStringList found;
  } cases[] = {
      {u"The light of Lisa, delight"_s, {u"li"_s}, {u"li"_s, u"Li"_s}},
      {u"Caf\u00E9 cafe\u0301s CAFE"_s, {u"cafe"_s}, {u"Caf\u00E9"_s, u"cafe\u0301"_s, u"CAFE"_s}},
      {u"\uFB01sh"_s, {u"fi"_s}, {u"\uFB01"_s}},
      {u"on the river bank"_s, {u"river b"_s, u"river"_s}, {u"river b"_s}},
      {u"(river) #evening"_s, {u"riv"_s, u"#even"_s}, {u"riv"_s, u"#even"_s}},
      {u"\U0001F642 smile \U00010400x"_s, {u"\U0001F642"_s, u"\U00010428"_s}, {u"\U0001F642"_s, u"\U00010400"_s}},
      {u"nothing"_s, {u""_s, u" "_s, u"\u0301"_s}, {}},
  };
  for (const auto& [text, words, expected] : cases) {
    QStringList found;
    for (const WordMatch& match : wordMatches(text, words)) found << text.mid(match.start, match.length);
    EXPECT_EQ(found, expected) << text.toStdString();
  }
}

}  // namespace

}  // namespace quillo
