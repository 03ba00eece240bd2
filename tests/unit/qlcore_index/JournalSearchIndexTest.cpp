#include "IndexFixture.h"
#include "tests/support/SmallDisk.h"

#include <QProcess>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include <thread>

namespace quillo {

using namespace Qt::StringLiterals;

class JournalSearchIndexTest : public IndexFixture {
 protected:
  static void setTimeWritten(const QString& path, time_t seconds) {
    const utimbuf times{seconds, seconds};
    ASSERT_EQ(::utime(QFile::encodeName(path).constData(), &times), 0);
  }
  // One entry with `text`, in an index that is closed.
  void indexed(const QString& text) {
    write(1, text);
    JournalSearchIndex(*package).bringUpToDate();
  }
  static void fill(const QString& path, qint64 from, qint64 size) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(from);
    QByteArray noise(size, '\0');
    for (char& c : noise) c = static_cast<char>(std::rand());
    file.write(noise);
  }
};

TEST_F(JournalSearchIndexTest, ListsInTheOrderOfThePlainIndexAlsoWithinASecond) {
  constexpr int count = 60;
  for (int i = 0; i < count; ++i) {
    // A few seconds for many entries; modified and written in another order.
    write(i, QString::number(i), 1'700'000'000 + i % 3,
          {{u"modificationDate"_s, Date::since1970(1'700'000'100 + i % 2)}});
    setTimeWritten(pathOf(i), 1'700'000'000 + (i * 7) % 5);
  }
  JournalSearchIndex index(*package);
  index.bringUpToDate();
  const auto expectSameOrder = [&] {
    JournalQuestion everything;
    everything.limit = 1000;
    QStringList uuids;
    for (const IndexedEntry& entry : index.ask(everything).entries) uuids << entry.uuid;
    QStringList plain;
    const QLJournalIndex entries(package);
    for (const auto& entry : entries.entries()) plain << entry->uuid();
    EXPECT_EQ(uuids, plain);
  };
  expectSameOrder();
  // Into the middle, one by one: there is always room.
  for (int i = count; i < 3 * count; ++i) {
    write(i, QString::number(i), 1'700'000'001, {{u"modificationDate"_s, Date::since1970(1'700'000'100)}});
    setTimeWritten(pathOf(i), 1'700'000'002);
    index.bringUpToDate({uuidOf(i) + u".plist"_s});
  }
  setTimeWritten(pathOf(5), 1'800'000'000);
  index.bringUpToDate();
  expectSameOrder();
}

TEST_F(JournalSearchIndexTest, TellsOfDamagedFilesAndLooksAtThemAgainWhenTheyChange) {
  write(1, u"whole"_s);
  writeBytes(pathOf(2), "half of an ent");
  writeBytes(package->entriesFolder() + u"/notes.plist"_s, "x");
  writeBytes(package->entriesFolder() + u"/.hidden.plist"_s, "x");
  const QString lower = package->entriesFolder() + u'/' + uuidOf(0xA1).toLower() + u".plist"_s;
  write(0xA1, u"upper"_s);
  ASSERT_TRUE(QFile::copy(pathOf(0xA1), lower));

  JournalSearchIndex index(*package);
  EXPECT_EQ(index.bringUpToDate().changed, 5);
  const auto damaged = index.damagedEntries();
  ASSERT_EQ(damaged.size(), 3);
  EXPECT_TRUE(damaged[0].reason.contains(uuidOf(2)));
  EXPECT_EQ(damaged[0].uuid, uuidOf(2));
  EXPECT_TRUE(damaged[1].reason.contains(u"has another file"_s));
  EXPECT_EQ(damaged[2].fileName, u"notes.plist"_s);
  EXPECT_EQ(index.uuidsWithPrefix(u"0000"_s, 10), (QStringList{uuidOf(1), uuidOf(2), uuidOf(0xA1)}));
  EXPECT_EQ(found(index).size(), 2);
  EXPECT_FALSE(index.bringUpToDate().hasNews());

  write(2, u"mended"_s);
  ASSERT_TRUE(QFile::remove(pathOf(0xA1)));
  ASSERT_TRUE(QFile::remove(package->entriesFolder() + u"/notes.plist"_s));
  writeBytes(pathOf(1), "broken");
  index.bringUpToDate();
  EXPECT_EQ(found(index, u"mended"_s).size(), 1);
  EXPECT_EQ(found(index, u"upper"_s).size(), 1);
  EXPECT_EQ(found(index).size(), 2);
  ASSERT_EQ(index.damagedEntries().size(), 1);
  EXPECT_EQ(index.damagedEntries()[0].uuid, uuidOf(1));
}

TEST_F(JournalSearchIndexTest, ShowsTheTextAroundWhatMatched) {
  struct Case {
    QString text;
    QString typed;
    QString begins;
    QStringList matches;
  };
  const QString filler = u"lorem ipsum dolor "_s.repeated(40);
  const Case cases[] = {
      {u"By the Sea, by the sea"_s, u"the sea"_s, u"By"_s, {u"the"_s, u"Sea"_s, u"the"_s, u"sea"_s}},
      {u"By the Séa, by the sea"_s, u"\"the sea\""_s, u"By"_s, {u"the Séa"_s, u"the sea"_s}},
      {u"Seaside"_s, u"sea"_s, u"Seaside"_s, {u"Seaside"_s}},
      {filler + u"needle "_s + filler, u"need"_s, u"lorem ipsum dolor lorem ipsum dolor needle"_s, {u"needle"_s}},
      {u"今日は東京港まで歩いた"_s, u"東京"_s, u"今日"_s, {u"東京"_s}},
      {u"cafe\u0301 au lait"_s, u"café -tea"_s, u"cafe"_s, {u"cafe\u0301"_s}},
      {u"a b c d"_s, u"\"b c\" \"a b\""_s, u"a"_s, {u"a b c"_s}},
      {QString(500, u'x') + u" y"_s, u"y"_s, u"y"_s, {u"y"_s}},
      {u"nothing here"_s, u"-elsewhere"_s, u"nothing"_s, {}},
  };
  JournalSearchIndex index(*package, {true, 1024, 1, {}});
  for (const Case& expected : cases) {
    write(1, expected.text);
    index.bringUpToDate();
    const JournalAnswer answer = index.ask(question(expected.typed));
    ASSERT_EQ(answer.entries.size(), 1) << expected.typed.toStdString();
    const IndexedEntry& entry = answer.entries[0];
    const QString excerpt = entry.text.mid(entry.excerpt.location, entry.excerpt.length);
    EXPECT_TRUE(excerpt.startsWith(expected.begins)) << excerpt.toStdString();
    EXPECT_LE(excerpt.size(), 200);
    QStringList matches;
    for (const TextRange& match : entry.matches) matches << entry.text.mid(match.location, match.length);
    EXPECT_EQ(matches, expected.matches) << expected.typed.toStdString();
  }
}

TEST_F(JournalSearchIndexTest, CountsByDayMonthTagAndPlace) {
  const auto at = [](const QString& name) {
    return PropertyListDictionary{{u"latitude"_s, 1.0}, {u"longitude"_s, 2.0}, {u"placeName"_s, name}};
  };
  write(1, u"sea"_s, 1'740'830'400,
        {{u"tags"_s, PropertyListArray{u"Work"_s, u"work"_s}}, {u"location"_s, at(u"Oslo"_s)}});
  write(2, u"sea"_s, 1'740'830'500, {{u"tags"_s, PropertyListArray{u"work"_s, u"Play"_s}}});
  write(3, u"sea land"_s, 1'743'508'800, {{u"tags"_s, PropertyListArray{u"WORK"_s}}, {u"location"_s, at(u"oslo"_s)}});
  write(4, u"land"_s, 1'709'294'400);
  JournalSearchIndex index(*package);
  index.bringUpToDate();
  const auto described = [&](const QString& typed, JournalCountBy by) {
    QStringList parts;
    for (const JournalCount& count : index.counts(question(typed), by))
      parts << (count.day.isValid() ? count.day.toString(Qt::ISODate) : count.name) + u' ' +
                   QString::number(count.count);
    return parts.join(u", "_s);
  };
  EXPECT_EQ(described(u""_s, JournalCountBy::Day), u"2024-03-01 1, 2025-03-01 2, 2025-04-01 1"_s);
  EXPECT_EQ(described(u"since:2025"_s, JournalCountBy::Month), u"2025-03-01 2, 2025-04-01 1"_s);
  EXPECT_EQ(described(u"sea"_s, JournalCountBy::Tag), u"WORK 3, Play 1"_s);
  EXPECT_EQ(described(u"sea before:2025-04"_s, JournalCountBy::Tag), u"work 2, Play 1"_s);
  EXPECT_EQ(described(u""_s, JournalCountBy::Place), u"oslo 2"_s);
  JournalQuestion onThisDay;
  onThisDay.anniversary = JournalQuestion::Anniversary{QDate(2025, 3, 1)};
  EXPECT_EQ(index.ask(onThisDay).total, 1);
  EXPECT_EQ(index.newestUUID(), uuidOf(3));
  EXPECT_EQ(index.entryWithUUID(uuidOf(4).toLower())->text, u"land"_s);
}

TEST_F(JournalSearchIndexTest, NoticesAChangeThatTheClockDoesNotShow) {
  write(1, u"aaaa"_s);
  setTimeWritten(pathOf(1), 1'700'000'000);
  JournalSearchIndex index(*package);
  index.bringUpToDate();
  // In place, as long as before, with the time set back; all within a moment.
  QFile file(pathOf(1));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  const QByteArray bytes = file.readAll().replace("aaaa", "bbbb");
  file.seek(0);
  file.write(bytes);
  file.close();
  setTimeWritten(pathOf(1), 1'700'000'000);
  index.bringUpToDate();
  EXPECT_EQ(found(index), QStringList{u"bbbb"_s});
}

// A folder whose time has not moved is not read again, but each of its files is looked at.
TEST_F(JournalSearchIndexTest, NoticesEveryChangeInAFolderThatHasSettled) {
  const QString lower = package->entriesFolder() + u'/' + uuidOf(0xA1).toLower() + u".plist"_s;
  for (int i = 1; i < 5; ++i) write(i, u"text%1"_s.arg(i), 1'700'000'000 - i);
  write(0xA1, u"upper"_s, 1'600'000'000);
  ASSERT_TRUE(QFile::copy(pathOf(0xA1), lower));
  writeBytes(package->entriesFolder() + u"/notes.plist"_s, "x");
  writeBytes(pathOf(9), "half");
  auto index = std::make_unique<JournalSearchIndex>(*package);
  index->bringUpToDate();
  settle(*index);
  const QByteArray entry = contentsOfFile(pathOf(1)).value_or("");
  struct Step {
    std::function<void()> change;
    QStringList found;
    int damaged;
  };
  const Step steps[] = {
      {[] {}, {u"text1"_s, u"text2"_s, u"text3"_s, u"text4"_s, u"upper"_s}, 3},
      {[&] { writeInPlace(1, QByteArray(entry).replace("text1", "other")); },
       {u"other"_s, u"text2"_s, u"text3"_s, u"text4"_s, u"upper"_s},
       3},
      {[&] { writeInPlace(2, "broken"); }, {u"other"_s, u"text3"_s, u"text4"_s, u"upper"_s}, 4},
      {[&] { writeInPlace(2, QByteArray(entry).replace("text1", "mended")); },
       {u"mended"_s, u"other"_s, u"text3"_s, u"text4"_s, u"upper"_s},
       3},
      {[&] { writeInPlace(9, QByteArray(entry).replace("text1", "whole")); },
       {u"mended"_s, u"other"_s, u"text3"_s, u"text4"_s, u"upper"_s, u"whole"_s},
       2},
      {[&] { QFile::remove(pathOf(3)); }, {u"mended"_s, u"other"_s, u"text4"_s, u"upper"_s, u"whole"_s}, 2},
      {[&] { QFile::remove(pathOf(0xA1)); }, {u"mended"_s, u"other"_s, u"text4"_s, u"upper"_s, u"whole"_s}, 1},
      {[&] { QFile::rename(pathOf(4), pathOf(5)); }, {u"mended"_s, u"other"_s, u"text4"_s, u"upper"_s, u"whole"_s}, 1},
  };
  int number = 0;
  for (const Step& step : steps) {
    SCOPED_TRACE(++number);
    step.change();
    // By the one that is open, and by one that begins.
    for (int turn = 0; turn < 2; ++turn) {
      index->bringUpToDate();
      QStringList now = found(*index);
      now.sort();
      EXPECT_EQ(now, step.found);
      EXPECT_EQ(index->damagedEntries().size(), step.damaged);
      index = std::make_unique<JournalSearchIndex>(*package);
    }
  }
}

TEST_F(JournalSearchIndexTest, IsForTheUserAloneAndKeepsNoDeletedText) {
  const ::mode_t before = ::umask(0);
  write(1, u"harmless"_s);
  write(2, u"unmentionable secret"_s);
  {
    JournalSearchIndex index(*package);
    index.bringUpToDate();
    EXPECT_EQ(databases().size(), 1);
    EXPECT_EQ(modeOf(home.path(u".cache/quillo/index"_s)), 0700);
    for (const QString& end : {u""_s, u"-wal"_s, u"-shm"_s, u"-state"_s}) EXPECT_EQ(modeOf(databases()[0] + end), 0600);
    ASSERT_TRUE(QFile::remove(pathOf(2)));
    index.bringUpToDate();
    for (int i = 0; i < 1000 && index.tidyUp(); ++i) continue;
    EXPECT_FALSE(index.tidyUp());
    for (const QString& end : {u""_s, u"-wal"_s}) {
      const QByteArray bytes = contentsOfFile(databases()[0] + end).value_or("");
      EXPECT_FALSE(bytes.contains("unmentionable")) << end.toStdString();
      EXPECT_EQ(bytes.contains("harmless"), end.isEmpty());
    }
    EXPECT_EQ(found(index), QStringList{u"harmless"_s});
  }
  ::umask(before);
}

TEST_F(JournalSearchIndexTest, ThrowsAwayWhatIsNotAsItWasLeft) {
  indexed(u"right"_s);
  const QString path = databases().value(0);
  const qint64 size = QFileInfo(path).size();
  const std::function<void()> harms[] = {
      [&] { fill(path, 0, size); },
      [&] { fill(path, size / 2, 300); },
      [&] { fill(path, 18, 2); },
      [&] { QFile::resize(path, size / 3); },
      [&] { QFile::resize(path, 0); },
      [&] { QFile::remove(path); },
      [&] { QFile::remove(path + u"-state"_s); },
      [&] { fill(path + u"-state"_s, 0, 10); },
      [&] { fill(path + u"-wal"_s, 0, 50'000); },
      [&] { writeBytes(path, "another program's file"); },
      [&] { QFile::remove(path), QDir().mkpath(path); },
      // Another version, and another program's database.
      [&] {
        QProcess::execute(u"sqlite3"_s, {path, u"PRAGMA user_version = 1"_s});
      },
      [&] {
        QProcess::execute(u"sqlite3"_s, {path, u"PRAGMA application_id = 7"_s});
      },
  };
  int number = 0;
  for (const auto& harm : harms) {
    SCOPED_TRACE(++number);
    QDir(path).removeRecursively();
    indexed(u"right"_s);
    harm();
    {
      JournalSearchIndex index(*package);
      EXPECT_FALSE(found(index, u"wrong"_s).size() > 0);
      index.bringUpToDate();
      EXPECT_EQ(found(index, u"right"_s).size(), 1);
      // While it is open.
      harm();
      EXPECT_EQ(found(index, u"right"_s).size(), 1);
      write(1, u"right too"_s);
      harm();
      index.bringUpToDate();
      EXPECT_EQ(found(index, u"too"_s).size(), 1);
    }
  }
}

TEST_F(JournalSearchIndexTest, GoesOnInMemoryWhereTheCacheCannotBeUsed) {
  if (::geteuid() != 0) GTEST_SKIP() << "small disks need root";
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  // Everything is on that disk: 256 kB, which hold the journal and not its index.
  const auto small = open(home.path(u"disk/Small.quillojournal"_s), true);
  ASSERT_TRUE(small);
  for (int i = 0; i < 30; ++i)
    ASSERT_TRUE(QFile::copy((write(1, u"word%1 "_s.arg(i).repeated(40)), pathOf(1)),
                            small->entriesFolder() + u'/' + uuidOf(i) + u".plist"_s));
  JournalSearchIndex index(*small, {false, 1024, 0, home.path(u"disk/cache"_s)});
  EXPECT_EQ(index.bringUpToDate().changed, 30);
  EXPECT_TRUE(index.isInMemory());
  EXPECT_EQ(found(index, u"word7"_s).size(), 1);

  // Another file system than that of the cache: never copied out of it.
  JournalSearchIndex outside(*small);
  outside.bringUpToDate();
  EXPECT_TRUE(outside.isInMemory());
  EXPECT_EQ(found(outside, u"word7"_s).size(), 1);
  EXPECT_TRUE(databases().isEmpty());
}

TEST_F(JournalSearchIndexTest, TakesTheIndexAlongWithAMovedJournalAndNotWithACopy) {
  indexed(u"original"_s);
  const QString moved = home.path(u"Moved.quillojournal"_s);
  ASSERT_TRUE(QDir().rename(package->url().toLocalFile(), moved));
  package = open(moved, false);
  JournalSearchIndex index(*package);
  EXPECT_EQ(found(index), QStringList{u"original"_s});
  EXPECT_EQ(databases().size(), 1);
  ASSERT_EQ(QProcess::execute(u"cp"_s, {u"-r"_s, moved, home.path(u"Copy.quillojournal"_s)}), 0);
  const auto copy = open(home.path(u"Copy.quillojournal"_s), false);
  ASSERT_TRUE(QFile::remove(copy->entriesFolder() + u'/' + uuidOf(1) + u".plist"_s));
  JournalSearchIndex other(*copy);
  other.bringUpToDate();
  EXPECT_EQ(found(other), QStringList());
  EXPECT_EQ(found(index), QStringList{u"original"_s});
}

TEST_F(JournalSearchIndexTest, SurvivesBeingKilledAndTwoProcessesAtOnce) {
  constexpr int count = 1500;
  for (int i = 0; i < count; ++i) write(i, u"entry number%1 of many"_s.arg(i), 1'700'000'000 + i);
  for (int round = 0; round < 10; ++round) {
    std::array<pid_t, 2> children{};
    for (pid_t& child : children) {
      child = ::fork();
      if (child != 0) continue;
      JournalSearchIndex(*package).bringUpToDate();
      ::_exit(0);
    }
    ::usleep(static_cast<useconds_t>(20'000 + round * 25'000));
    ::kill(children[0], SIGKILL);
    if (round % 2 == 0) ::kill(children[1], SIGKILL);
    for (const pid_t child : children) ::waitpid(child, nullptr, 0);
    write(round, u"changed in round%1"_s.arg(round), 1'700'000'000 + round);
  }
  JournalSearchIndex index(*package);
  const auto update = index.bringUpToDate();
  EXPECT_TRUE(update.isComplete);
  EXPECT_FALSE(index.isInMemory());
  EXPECT_EQ(index.ask({}).total, count);
  EXPECT_EQ(found(index, u"number777"_s).size(), 1);
  EXPECT_EQ(found(index, u"round3"_s).size(), 1);
  EXPECT_EQ(index.ask(question(u"many"_s)).total, count - 10);
}

// There what very many words begin with is looked up in another way.
TEST_F(JournalSearchIndexTest, FindsUnfinishedWordsInALargeJournal) {
  constexpr int count = 5200;
  const auto text = [](int i) { return u"%1 word%2 Thé1"_s.arg(i % 2 == 0 ? u"wording"_s : u"while"_s).arg(i % 10); };
  for (int i = 0; i < count; ++i) write(i, text(i), 1'700'000'000 + i);
  JournalSearchIndex index(*package, {true, 4096, 0, {}});
  index.bringUpToDate();
  const auto expectTotals = [&](int changed) {
    const QPair<QString, int> totals[] = {
        {u"w"_s, count - changed},
        {u"wo"_s, count - changed},
        {u"word"_s, count - changed},
        {u"wordi"_s, count / 2 - changed},
        {u"wh"_s, count / 2},
        {u"the"_s, count - changed},
        {u"thé1"_s, count - changed},
        {u"word3"_s, count / 10},
        {u"\"word\""_s, 0},
        {u"wh -word3"_s, count / 2 - count / 10},
        {u"z"_s, changed},
        {u"zebra"_s, changed},
    };
    for (const auto& [typed, total] : totals) EXPECT_EQ(index.ask(question(typed)).total, total) << typed.toStdString();
  };
  expectTotals(0);
  // Of very many only the newest are ranked; page by page each comes once, the others behind them.
  JournalQuestion best = question(u"the"_s);
  best.order = JournalQuestion::Order::BestFirst;
  best.limit = 900;
  QStringList uuids;
  for (best.offset = 0; best.offset < 7200; best.offset += best.limit) {
    const JournalAnswer answer = index.ask(best);
    EXPECT_EQ(answer.total, count);
    for (const IndexedEntry& entry : answer.entries) uuids << entry.uuid;
  }
  EXPECT_EQ(uuids.size(), count);
  EXPECT_EQ(QSet<QString>(uuids.begin(), uuids.end()).size(), count);
  EXPECT_EQ(uuids.last(), uuidOf(0));
  for (int i = 0; i < 8; i += 4) {
    write(2 * i, u"zebra"_s, 1'700'000'000 + 2 * i);
    index.bringUpToDate({uuidOf(2 * i) + u".plist"_s});
  }
  expectTotals(2);
}

// Entries of other programs: very long words, none at all, times and names that nobody has.
TEST_F(JournalSearchIndexTest, TakesWhateverAFileHolds) {
  const QString texts[] = {QString(),
                           QString(300'000, u'x'),
                           u"\u0301\u0302"_s,
                           QString(QChar(0xE000)) + u"tag"_s,
                           QString(2, QChar::ByteOrderMark) + u"mark"_s,
                           u"\"quoted\" AND NOT * ^ : ( )"_s,
                           QString(200'000, u'今'),
                           u"a\0b"_s};
  int number = 0;
  for (const QString& text : texts) {
    ++number;
    write(number, text, -1e11 * number,
          {{u"tags"_s, PropertyListArray{text.left(50), u"a b-c_d'"_s, QString()}},
           {u"timeZone"_s, u"../../etc/passwd"_s}});
  }
  write(100, u"far away"_s, 250e9);
  JournalSearchIndex index(*package);
  EXPECT_TRUE(index.bringUpToDate().isComplete);
  const qsizetype readable = QLJournalIndex(package).entries().size();
  JournalQuestion everything;
  EXPECT_EQ(index.ask(everything).entries.size(), readable);
  EXPECT_EQ(index.ask(question(u"tag:\"A b-c_d'\""_s)).total, index.ask(question(u"-away"_s)).total);
  for (const QString& typed :
       {u"\" AND * ("_s, u"NEAR(a b)"_s, u"tag:* x"_s, u"a:b {c}"_s, u"'; DROP TABLE entry; --"_s, u"%_?"_s}) {
    const auto asked = JournalQuestion::parse(typed, QDate(2025, 3, 12));
    EXPECT_LE(asked ? index.ask(*asked).total : 0, readable);
  }
  EXPECT_FALSE(index.counts(everything, JournalCountBy::Tag).isEmpty());
  EXPECT_EQ(index.uuidsWithPrefix(u"not an identifier"_s, 5), QStringList());
  EXPECT_EQ(index.uuidsWithPrefix(u""_s, 3).size(), 3);
  EXPECT_FALSE(index.isInMemory());
}

TEST_F(JournalSearchIndexTest, StopsWhenAskedToAndGoesOnLater) {
  for (int i = 0; i < 2000; ++i) write(i, u"entry"_s, 1'700'000'000 + i);
  JournalSearchIndex index(*package);
  std::stop_source stop;
  const auto update = index.bringUpToDate(stop.get_token(), [&](const auto& progress) {
    if (progress.done > 0) stop.request_stop();
  });
  EXPECT_FALSE(update.isComplete);
  EXPECT_GT(index.ask({}).total, 0);
  EXPECT_LT(index.ask({}).total, 2000);
  EXPECT_TRUE(index.bringUpToDate().isComplete);
  EXPECT_EQ(index.ask({}).total, 2000);
}

}  // namespace quillo
