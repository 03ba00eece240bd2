// Diaries of other programs: what of them arrives.

#include "ExchangeFixture.h"
#include "exchange/RedNotebookMarkup.h"

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

class Diaries : public ExchangeFixture {
 protected:
  struct Told {
    QString date;
    QString text;
    QStringList tags;
    bool operator==(const Told&) const = default;
  };
  // By their dates.
  static QList<Told> told(const Package& package) {
    QList<Told> list;
    for (const auto& [name, fields] : entriesOf(package)) {
      const auto read = QLJournalEntryFile::entryWithUUID(*package, name.chopped(6), nullptr);
      if (read) list << Told{read->creationDate().toISO8601(), read->string(), read->tags()};
    }
    std::sort(list.begin(), list.end(), [](const Told& a, const Told& b) { return a.date < b.date; });
    return list;
  }
};

// As the documentation of its formats shows them, with a star.
constexpr auto jrnlText =
    "[2020-06-28 18:22] This is the first sample entry\n"
    "This is the sample body text of the first sample entry.\n"
    "\n"
    "[2020-07-01 20:00] This is the second sample entry\n"
    "This is the sample body text of the second sample entry, but this one has a @tag.\n"
    "\n"
    "[2020-07-02 09:00] This is the third sample entry *\n"
    "Not a@tag.\n"
    "\n"
    "2020-07-03 09:00 is a line of it.\n"
    "\n";
constexpr auto jrnlJson = R"({
  "tags": {
    "@tag": 1
  },
  "entries": [
    {
      "title": "This is the first sample entry",
      "body": "This is the sample body text of the first sample entry.",
      "date": "2020-06-28",
      "time": "18:22",
      "tags": [],
      "starred": false
    },
    {
      "title": "This is the second sample entry",
      "body": "This is the sample body text of the second sample entry, but this one has a @tag.",
      "date": "2020-07-01",
      "time": "20:00",
      "tags": [
        "@tag"
      ],
      "starred": false
    },
    {
      "title": "This is the third sample entry",
      "body": "Not a@tag.\n\n2020-07-03 09:00 is a line of it.\n",
      "date": "2020-07-02",
      "time": "09:00",
      "tags": [],
      "starred": true
    }
  ]
})";

TEST_F(Diaries, JrnlInEachOfItsForms) {
  const QList<Told> expected{
      {u"2020-06-28T18:22:00Z"_s,
       u"This is the first sample entry\nThis is the sample body text of the first sample entry."_s,
       {}},
      {u"2020-07-01T20:00:00Z"_s,
       u"This is the second sample entry\n"
       "This is the sample body text of the second sample entry, but this one has a @tag."_s,
       {u"tag"_s}},
      {u"2020-07-02T09:00:00Z"_s,
       u"This is the third sample entry\nNot a@tag.\n\n2020-07-03 09:00 is a line of it."_s,
       {u"starred"_s}},
  };
  const QString text = stored(u"journal.txt"_s, jrnlText);
  ASSERT_EQ(imported(journal, "jrnl", text)->added, 3);
  EXPECT_EQ(told(journal), expected);
  // The same entries again, wherever they lie and however they are written.
  stored(u"folder/2020/06/28.txt"_s, QByteArray(jrnlText).left(QByteArray(jrnlText).indexOf("[2020-07-01")));
  stored(u"folder/2020/07/01.txt"_s,
         QByteArray(jrnlText).mid(QByteArray(jrnlText).indexOf("[2020-07-01")).replace("\n", "\r\n"));
  for (const QString& path : {text, stored(u"export.json"_s, jrnlJson), home.path(u"folder"_s)}) {
    const auto again = imported(journal, "jrnl", path);
    EXPECT_EQ(again->same, 3) << path.toStdString();
    EXPECT_EQ(again->entries(), 3) << path.toStdString();
  }
  ASSERT_EQ(imported(other, "jrnl", home.path(u"export.json"_s))->added, 3);
  EXPECT_EQ(told(other), expected);
}

TEST_F(Diaries, JrnlOfTheFirstVersionAndOddities) {
  const QString path = stored(u"old.txt"_s,
                              "2012-03-29 09:00 Called in sick.\n"
                              "Used the time.\n"
                              "[2012-03-30 09:00] is a line of it\n"
                              "2012-03-29 09:00 Called in sick.\n"
                              "2013-10-27 12:27:27 AM **bold** and #hash\n"
                              "2013-10-27 4:05 pm *Best day of my life\n");
  ASSERT_EQ(imported(journal, "jrnl", path)->added, 4);
  EXPECT_EQ(imported(journal, "jrnl", path)->same, 4);
  const auto all = told(journal);
  EXPECT_EQ(all[2], (Told{u"2013-10-27T00:27:27Z"_s, u"**bold** and #hash"_s, {u"hash"_s}}));
  EXPECT_EQ(all[3], (Told{u"2013-10-27T16:05:00Z"_s, u"Best day of my life"_s, {u"starred"_s}}));
}

TEST_F(Diaries, RedNotebookFilesOfTheProgramItself) {
  const QString folder = QStringLiteral(QUILLO_TEST_DATA "/rednotebook");
  ASSERT_EQ(imported(journal, "rednotebook", folder)->added, 4);
  EXPECT_EQ(imported(journal, "rednotebook", folder)->same, 4);
  EXPECT_EQ(imported(journal, "rednotebook", folder + u"/2026-11.txt"_s)->same, 3);
  const auto all = told(journal);
  EXPECT_EQ(all[0], (Told{u"2026-09-15T12:00:00Z"_s, u"2024: a year\n- [ ] box\n1: {text: x}"_s, {}}));
  EXPECT_EQ(
      all[1],
      (Told{u"2026-11-08T12:00:00Z"_s,
            u"### A heading\n"
            "Some **bold**, *italic*, _underlined_, ~~struck~~ and ``code``.\n"
            "## Smaller\n"
            "- one\n- two\n  - deeper\n\n1. first\n2. second\n\n"
            "A link [Quillo](http://example.org/a_b?x=1&y=2) and a plain one http://example.org/some//path__here\n"
            "An image ![](/tmp/pic.png) and ![](file:///tmp/other.jpg)\n"
            "Tags #work and #two_words and a colour red\n"
            "A line   \nbroken\n***\n| cell a | cell b |\n"
            "Quote: \"colon: here\" 'single' # not a tag\n"
            "Umlaut äöü, 日本, emoji 🙂"_s,
            {u"work"_s, u"two_words"_s}}));
  EXPECT_EQ(all[3].text, u" leading space\n\ttab: and # hash\n%% comment\n\"quoted\""_s);
}

TEST_F(Diaries, CategoriesOfOlderRedNotebookFiles) {
  const QString path = stored(u"2009-02.txt"_s,
                              "14:\n"
                              "  Cool Stuff: {Went to see the //pope//: null}\n"
                              "  Tags: {Work: null, work: null, Long words: null}\n"
                              "  text: 'Text'\n"
                              "15: {Idea: [one, two]}\n");
  ASSERT_EQ(imported(journal, "rednotebook", path)->added, 2);
  const auto all = told(journal);
  EXPECT_EQ(all[0], (Told{u"2009-02-14T12:00:00Z"_s,
                          u"Text\n\n## Cool Stuff\n\n- Went to see the *pope*"_s,
                          {u"Cool-Stuff"_s, u"Work"_s, u"Long-words"_s}}));
  EXPECT_EQ(all[1], (Told{u"2009-02-15T12:00:00Z"_s, u"## Idea\n\n- one\n- two"_s, {u"Idea"_s}}));
}

TEST_F(Diaries, RedNotebooksFormatting) {
  const std::pair<const char*, const char*> cases[] = {
      {"**a** ** b** ****", "**a** ** b** ****"},
      {"//a// and/or // b // //c", "*a* and/or // b // //c"},
      {"--a-- b--c a -- b --x", "~~a~~ b--c a -- b --x"},
      {"http://a//b// //c//", "http://a//b// *c*"},
      {"**[a b \"\"http://x/(y)\"\"]**", "**[a b](<http://x/(y)>)**"},
      {"[f \"\"file:///a b\"\"] [not a link] [x]", "[f](<file:///a b>) [not a link] [x]"},
      {"[\"\"/a b/c\"\".png?20] [d.jpg]", "![](</a b/c.png>) ![](d.jpg)"},
      {"\"\"//raw//\"\" ``//code//``", "//raw// ``//code//``"},
      {"{//a//|color:#ff0000} {b}", "*a* {b}"},
      {"= a =\n== b ==\n=c==\n=====d=====", "# a\n## b\n=c==\n##### d"},
      {"a\n--------------------", "a\n***"},
      {"+ a\n  - b\n    + c\n+ d\n\n\n+ e", "1. a\n   - b\n     1. c\n2. d\n\n\n1. e"},
      {"+\n+ a\n-\n-x", "1.\n2. a\n-\n-x"},
      {"- a\n  more\n- b\ntext\n-", "- a\n  more\n- b\ntext\n-"},
      {"```\n//a//\n- b\n```\n//c//", "```\n//a//\n- b\n```\n*c*"},
      {"a \\\\ b \\\\", "a   \nb   "},
      {"#a__b__c __d__", "#a__b__c _d_"},
      {"\xEF\xB7\x90 //a//", "\xEF\xB7\x90 //a//"},
  };
  for (const auto& [text, markdown] : cases)
    EXPECT_EQ(markdownOfRedNotebook(QString::fromUtf8(text)), QString::fromUtf8(markdown)) << text;
}

TEST_F(Diaries, TheFormatIsToldWhereItIsPlain) {
  struct Case {
    QString path;
    const char* format;  // empty where it is not plain
  };
  const Case cases[] = {
      {QStringLiteral(QUILLO_TEST_DATA "/rednotebook"), "rednotebook"},
      {QStringLiteral(QUILLO_TEST_DATA "/rednotebook/2026-11.txt"), "rednotebook"},
      {stored(u"2024-05.txt"_s, "A month of words"), "text"},
      {stored(u"a.txt"_s, jrnlText), "jrnl"},
      {stored(u"a"_s, "\xEF\xBB\xBF\n2012-03-29 09:00 One\nx\n2012-03-30 09:00 Two\n"), "jrnl"},
      {stored(u"b"_s, "x\n2012-03-29 09:00 One\n2012-03-30 09:00 Two\n"), ""},
      {stored(u"b.txt"_s, "2012-03-29 09:00 One\nwords"), "text"},
      {stored(u"a.json"_s, jrnlJson), "jrnl"},
      {stored(u"b.json"_s, R"([{"uuid":"00000000-0000-4000-8000-000000000001"}])"), "json"},
      {stored(u"c.json"_s, R"({"format":"quillo-entries","version":1,"entries":[]})"), "json"},
      {stored(u"d.json"_s, R"({"items":[{"title":"x"}]})"), ""},
      {stored(u"a.md"_s, "[2020-06-28 18:22] words"), "markdown"},
      {stored(u"b.md"_s, ""), ""},
      {stored(u"a.csv"_s, "Date;Body;Mood\n"), "csv"},
      {stored(u"b.csv"_s, "Name;Age\n"), ""},
      {stored(u"a.png"_s, "\x89PNG\xff"), ""},
      {home.path(u"missing"_s), ""},
      {QFileInfo(stored(u"notes/x/a.md"_s, "a")).path(), "markdown"},
      {QFileInfo(stored(u"texts/a.txt"_s, "a")).path(), "text"},
      {QFileInfo(stored(u"days/2024/05/01.txt"_s, jrnlText)).path() + u"/../.."_s, "jrnl"},
  };
  for (const Case& one : cases) {
    const ImportFormat* guessed = guessImportFormat(one.path);
    EXPECT_EQ(QString::fromLatin1(guessed ? guessed->name : ""), QString::fromLatin1(one.format))
        << one.path.toStdString();
  }
  stored(u"notes/b.txt"_s, "b");
  EXPECT_EQ(guessImportFormat(home.path(u"notes"_s)), nullptr);
}

}  // namespace
