#include "ExchangeFixture.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

class Import : public ExchangeFixture {};

QByteArray entry(const QByteArray& more = R"("text":"x")") {
  return R"({"uuid":"00000000-0000-4000-8000-000000000001",)" + more + "}";
}

// A few kilobytes that stand for very many words.
QByteArray aliasBomb() {
  QByteArray words;
  QByteArray categories;
  for (int i = 0; i < 1000; ++i) {
    words += 'w' + QByteArray::number(i) + ": , ";
    categories += 'c' + QByteArray::number(i) + ": *words, ";
  }
  return "1: {text: a, Words: &words {" + words + "}}\n2: {" + categories + "text: b}\n";
}

TEST_F(Import, WhatCannotBeReadIsToldWithItsPlace) {
  struct Case {
    const char* format;
    QByteArray bytes;
    int line;          // of the fault; 0 for the file as a whole
    const char* said;  // empty where all of it can be read
    int entries;
  };
  const QByteArray deep(100'000, '[');
  const QByteArray head = "{\"format\":\"quillo-entries\",\n\"version\":1,\"entries\":[\n";
  const Case cases[] = {
      {"json", head + entry() + "]}", 0, "", 1},
      {"json", "[]", 0, "", 0},
      {"json", "\xEF\xBB\xBF {\"entries\" : [ ] }\n", 0, "", 0},
      {"json", "", 1, "empty", 0},
      {"json", "text", 1, "no JSON", 0},
      {"json", "\"text\"", 1, "no JSON", 0},
      {"json", head + entry() + ",\n" + entry().chopped(3), 4, "ends within", 1},
      {"json", head + entry(), 3, "too early", 1},
      {"json", head + entry() + "]}\n]", 4, "behind the end", 1},
      {"json", head + entry() + " " + entry(), 3, "comma", 1},
      {"json", head + "]", 3, "too early", 0},
      {"json", head + ",", 3, "expected here", 0},
      {"json", head + "{\"a\n\":\n}]}", 5, "no JSON", 0},
      {"json", head + deep + "]}", 3, "ends within", 0},
      {"json", head + deep + QByteArray(deep.size(), ']') + "]}", 3, "no JSON", 0},
      {"json", "{\"a\":" + deep, 1, "\"a\"", 0},
      {"json", R"({"version":2,"entries":[]})", 0, "newer", 0},
      {"json", R"({"entries":[],"version":"1"})", 0, "version", 0},
      {"json", R"({"format":"else","entries":[]})", 0, "another format", 0},
      {"json", "[1]", 1, "no JSON", 0},
      {"json", "[[]]", 1, "an entry is expected", 0},
      {"json", "[{}]", 1, "uuid", 0},
      {"json", R"([{"uuid":"../../x"}])", 1, "uuid", 0},
      {"json", "[" + entry(R"("text":1)") + "]", 1, "text", 0},
      {"json", "[" + entry(R"("creationDate":"2024-01-01T00:00:00")") + "]", 1, "creationDate", 0},
      {"json", "[" + entry(R"("creationDate":1e999)") + "]", 1, "JSON", 0},
      {"json", "[" + entry(R"("tags":[1])") + "]", 1, "tags", 0},
      {"json", "[" + entry("\"text\":\"\xff\"") + "]", 1, "UTF", 0},
      {"json", "[" + entry(R"("otherFields":{"a":{"$later":1}})") + "]", 1, "\"a\"", 0},
      {"json", "[" + entry(R"("otherFields":{"text":1})") + "]", 1, "text", 0},
      {"json", "[" + entry(R"("otherFields":{"a":[null]})") + "]", 1, "\"a\"", 0},
      {"json", "[" + entry() + ",\n" + entry() + "]", 2, "second time", 1},
      {"markdown", "---\nid: 1\ntext", 1, "no end", 0},
      {"markdown", "---\n" + QByteArray(100'000, '\n') + "---\n", 1, "no end", 0},
      {"markdown", "---\ndate: 2024-01-01\ntags: [\n---\nx", 4, "cannot be read", 0},
      {"markdown", "---\ntags: " + QByteArray(60'000, '[') + "\n---\nx", 3, "cannot be read", 0},
      {"markdown", "---\na: &a [*a]\nb: *c\n---\nx", 3, "cannot be read", 0},
      {"markdown", "---\ntags: [a]\ndate: 2024-02-30\n---\nx", 3, "no date", 0},
      {"markdown", "---\ndate: 99999999999999999999\n---\nx", 2, "no date", 0},
      {"markdown", "---\ndate: 0000-01-01\n---\nx", 2, "no date", 0},
      {"markdown", "---\n- a\n---\nx", 2, "keys and values", 0},
      {"markdown", "---\nlocation: {latitude: 1e999, longitude: 2}\n---\nx", 2, "earth", 0},
      {"markdown", "a\nb\xc3(\n", 2, "UTF-8", 0},
      {"markdown", " \n", 0, "no text", 0},
      {"markdown", "---\n---\nx", 0, "", 1},
      {"markdown", QByteArray("a\0b\x1b", 4), 0, "", 1},
      {"text", "--- x\n", 0, "", 1},
      {"csv", "text,date\nx,2024-01-01\n\ny,2024-01-01\n", 0, "", 2},
      {"csv", "", 1, "no column", 0},
      {"csv", "text\nx", 1, "\"date\"", 0},
      {"csv", "text,date\n\"a\nb\",01/02/2024", 2, "01/02/2024", 0},
      {"csv", "text,date\na,2024-01-01\n\"b", 3, "no end", 1},
      {"csv", "\"text", 1, "no end", 0},
      {"csv", "text,date\n\xff,2024-01-01", 2, "UTF-8", 0},
      {"csv", "text,date\n,2024-01-01", 2, "no text", 0},
      {"jrnl", "[2024-02-29 07:05] Title\nbody\n", 0, "", 1},
      {"jrnl", "", 0, "", 0},
      {"jrnl", "\n\nwords\n[2024-02-29 07:05] Title", 3, "no entry begins", 1},
      {"jrnl", "[2024-02-30 07:05] Title\nbody\n[2024-02-29 07:05] a", 1, "no date", 1},
      {"jrnl", "[2024-02-29 13:05 PM] Title", 1, "no date", 0},
      {"jrnl", "[2024-02-29 07:05]\n \n", 1, "no text", 0},
      {"jrnl", "[2024-02-29 07:05] a\xff", 1, "UTF-8", 0},
      {"jrnl", "{\"entries\":[\n{\"title\":1}]}", 2, "title, body", 0},
      {"jrnl", R"({"entries":[{"title":"a","body":"","date":"soon","time":""}]})", 1, "no date", 0},
      {"jrnl", "{\"entries\":[\n{\"title\":\"a\"", 2, "ends within", 0},
      {"jrnl", R"({"tags":{},"entries":[]})", 0, "", 0},
      {"rednotebook", "29: {text: a}\n", 0, "", 1},
      {"rednotebook", "", 0, "", 0},
      {"rednotebook", "1: {text: a}\n30: {text: b}\n2: {text: c}", 2, "no day of 2024-02", 2},
      {"rednotebook", "x: {text: a}", 1, "\"x\" is no day", 0},
      {"rednotebook", "1: {text: ' '}", 1, "no text", 0},
      {"rednotebook", "1: words", 1, "no text and no categories", 0},
      {"rednotebook", "- 1\n- 2", 1, "no list of days", 0},
      {"rednotebook", "1: {text: a}\n2: {text: 'b\n", 3, "cannot be read", 0},
      {"rednotebook", "1: {text: \xff}", 1, "UTF-8", 0},
      {"rednotebook", "1: {text: a}\n1: {text: b}", 2, "second time", 1},
      {"rednotebook", "1: " + QByteArray(100'000, '{'), 1, "cannot be read", 0},
      {"rednotebook", "1: &a {text: a, Words: *a}", 1, "", 1},
      {"rednotebook", aliasBomb(), 2, "too many words", 1},
      {"rednotebook", QByteArray(3'000'000, ' '), 0, "longer than 2 MiB", 0},
  };
  int number = 0;
  for (const Case& one : cases) {
    const bool hasMonths = QLatin1StringView(one.format) == u"rednotebook";
    const QString path = stored(u"in %1"_s.arg(++number) + (hasMonths ? u"/2024-02.txt"_s : QString()), one.bytes);
    SCOPED_TRACE(one.bytes.left(80).toStdString());
    const auto looked = ExchangeFixture::looked(journal, one.format, path);
    EXPECT_EQ(looked.counts.entries(), one.entries);
    const QString told = looked.told.join(u'\n');
    EXPECT_EQ(told.isEmpty(), !*one.said) << told.toStdString();
    EXPECT_TRUE(told.contains(QLatin1StringView(one.said))) << told.toStdString();
    const QString place = one.line > 0 ? u"%1:%2: "_s.arg(path).arg(one.line) : path + u": "_s;
    EXPECT_TRUE(told.isEmpty() || told.startsWith(place)) << told.toStdString();
    EXPECT_TRUE(told.count(u'\n') == 0) << told.toStdString();
  }
  EXPECT_TRUE(entriesOf(journal).empty());
}

TEST_F(Import, AFolderOfNotesFromElsewhere) {
  const QString folder = home.path(u"notes"_s);
  stored(u"notes/2024-02-29 0705 Leap.md"_s, "Day #one");
  stored(u"notes/deep/er/Diary 20240301.MD"_s, "\xEF\xBB\xBFtwo\r\nlines\r\n");
  stored(u"notes/a.md"_s, "---\ntitle: Head\ndate: 2024-03-02 10:00:00 +02:00\ntags: x, y\nmood: good\n---\nthree");
  stored(u"notes/photo.jpg"_s, "\xff\xd8");
  stored(u"notes/.obsidian/x.md"_s, "hidden");
  ASSERT_TRUE(QFile::link(u"/etc/hostname"_s, folder + u"/link.md"_s));
  ASSERT_TRUE(QFile::link(folder, folder + u"/loop"_s));
  ASSERT_TRUE(QDir(folder).mkdir(u"folder.md"_s));
  ASSERT_EQ(::mkfifo(QFile::encodeName(folder + u"/pipe.md"_s).constData(), 0600), 0);

  const auto looked = ExchangeFixture::looked(journal, "markdown", folder);
  ASSERT_EQ(looked.told.size(), 3) << looked.told.join(u'\n').toStdString();
  EXPECT_EQ(looked.counts.problems, 1);  // the pipe
  ASSERT_EQ(imported(journal, "markdown", folder)->added, 3);
  QMap<QString, std::shared_ptr<QLJournalEntryFile>> byText;
  for (const auto& [name, fields] : entriesOf(journal)) {
    const auto read = QLJournalEntryFile::entryWithUUID(*journal, name.chopped(6), nullptr);
    ASSERT_TRUE(read);
    byText[read->string()] = read;
  }
  ASSERT_EQ(byText.keys(), (QStringList{u"# Head\n\nthree"_s, u"Day #one"_s, u"two\nlines"_s}));
  EXPECT_EQ(byText[u"Day #one"_s]->creationDate().toISO8601(), u"2024-02-29T07:05:00Z"_s);
  EXPECT_EQ(byText[u"Day #one"_s]->tags(), QStringList{u"one"_s});
  EXPECT_EQ(byText[u"two\nlines"_s]->creationDate().toISO8601(), u"2024-03-01T12:00:00Z"_s);
  const auto& three = *byText[u"# Head\n\nthree"_s];
  EXPECT_EQ(three.creationDate().toISO8601(), u"2024-03-02T08:00:00Z"_s);
  EXPECT_EQ(three.timeZone(), u"Etc/GMT-2"_s);
  EXPECT_EQ(three.tags(), (QStringList{u"x"_s, u"y"_s}));
  // Known again, also when one of them has changed: that is told and stays.
  stored(u"notes/2024-02-29 0705 Leap.md"_s, "Changed");
  const auto again = imported(journal, "markdown", folder);
  EXPECT_EQ(again->same, 2);
  EXPECT_EQ(again->differing, 1);
  EXPECT_EQ(entriesOf(journal).size(), 3u);
  EXPECT_EQ(imported(journal, "markdown", folder, /*isReplacing=*/true)->replaced, 1);
  EXPECT_EQ(imported(journal, "markdown", folder)->same, 3);
}

TEST_F(Import, ATable) {
  const QString path = stored(u"t.csv"_s,
                              "\xEF\xBB\xBF"
                              "Date;Time;Body;Tags;Latitude;Longitude;Place;Title;Mood\r\n"
                              "2024-02-29;7:05;\"a;\"\"b\"\"\r\nc #d\";#x, y;60.5;5;Bergen;;good\r\n"
                              "2024-02-29;7:05;two;;;;;Head\r\n");
  ASSERT_EQ(imported(journal, "csv", path)->added, 2);
  EXPECT_EQ(imported(journal, "csv", path)->same, 2);
  QStringList texts;
  for (const auto& [name, fields] : entriesOf(journal)) {
    const auto read = QLJournalEntryFile::entryWithUUID(*journal, name.chopped(6), nullptr);
    texts << read->string();
    EXPECT_EQ(read->creationDate().toISO8601(), u"2024-02-29T07:05:00Z"_s);
    if (!read->location()) continue;
    EXPECT_EQ(*read->location(), (QLLocation{60.5, 5, u"Bergen"_s}));
    EXPECT_EQ(read->tags(), (QStringList{u"x"_s, u"y"_s, u"d"_s}));
  }
  texts.sort();
  EXPECT_EQ(texts, (QStringList{u"# Head\n\ntwo"_s, u"a;\"b\"\nc #d"_s}));
}

TEST_F(Import, WhatIsThereStaysUnlessItIsToBeReplaced) {
  for (int i : {1, 2, 10}) store(journal, uuidOf(i), {{EntryFields::text, u"old %1"_s.arg(i)}, {u"mood"_s, i}});
  const QString file = home.path(u"f.json"_s);
  exported(journal, "json", file);
  store(journal, uuidOf(1), {{EntryFields::text, u"newer"_s}});
  ASSERT_TRUE(writeFileInPlace(pathOf(journal, uuidOf(2)), "torn"));
  // As another writer may name it.
  ASSERT_TRUE(QFile::rename(pathOf(journal, uuidOf(10)), pathOf(journal, uuidOf(10).toLower())));
  const Entries before = entriesOf(journal);
  const auto kept = imported(journal, "json", file);
  EXPECT_EQ(kept->differing, 2);
  EXPECT_EQ(kept->same, 1);
  EXPECT_EQ(entriesOf(journal), before);
  EXPECT_EQ(imported(journal, "json", file, /*isReplacing=*/true)->replaced, 2);
  EXPECT_EQ(imported(journal, "json", file)->same, 3);
  EXPECT_EQ(entriesOf(journal).size(), 3u);
}

TEST_F(Import, AFailingWriteLeavesTheJournalAsItWas) {
  store(journal, uuidOf(1), {{EntryFields::text, u"old"_s}});
  const Entries before = entriesOf(journal);
  // The third cannot be written: there is a folder in its place.
  ASSERT_TRUE(QDir().mkpath(pathOf(journal, uuidOf(3))));
  QByteArray list;
  for (int i = 1; i <= 4; ++i)
    list += (i == 1 ? "[" : ",") + QByteArray(R"({"uuid":")") + uuidOf(i).toLatin1() + R"(","text":"new"})";
  Error error;
  EXPECT_FALSE(imported(journal, "json", stored(u"f.json"_s, list + "]"), /*isReplacing=*/true, &error));
  EXPECT_TRUE(error.localizedDescription.contains(uuidOf(3))) << error.localizedDescription.toStdString();
  EXPECT_EQ(entriesOf(journal), before);
  // The same where somebody stops it.
  int asked = 0;
  const auto source = importFormatNamed(u"json"_s)->open(home.path(u"f.json"_s), false);
  EXPECT_FALSE(JournalImport(*journal, true)
                   .write(*source,
                          {.problem = {}, .passedBy = {}, .progress = {}, .isStopped = [&] { return ++asked > 2; }},
                          &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"stopped"_s));
  EXPECT_EQ(entriesOf(journal), before);
}

}  // namespace
