#include "IndexFixture.h"
#include "qlcore/JournalError.h"
#include "qlcore/index/JournalIndexService.h"
#include "tests/support/EventLoop.h"

#include <random>

namespace quillo {

using namespace Qt::StringLiterals;

class ConflictIndexTest : public IndexFixture {
 protected:
  static QString copyName(int number, int which = 0) {
    return uuidOf(number) + u".sync-conflict-20260309-14055%1-ABCDEF2.plist"_s.arg(which);
  }
  QString copyPath(int number, int which = 0) const {
    return package->entriesFolder() + u'/' + copyName(number, which);
  }
  void writeCopy(int number, const QString& text, int which = 0) const {
    writeBytes(copyPath(number, which),
               *PropertyListSerialization::dataWithPropertyList(
                   PropertyListDictionary{{u"text"_s, text}, {u"creationDate"_s, Date::since1970(1'700'000'000)}},
                   PropertyListFormat::XML));
  }
};

TEST_F(ConflictIndexTest, AnEntryIsFoundByTheWordsOfItsOtherVersions) {
  write(1, u"at the sea"_s);
  write(2, u"in the hills"_s);
  writeCopy(1, u"at the lake"_s);
  writeBytes(copyPath(1, 1), "half of an ent");
  writeBytes(package->entriesFolder() + u'/' + uuidOf(1) + u"_BASE_4711.plist"_s, "of a merge");
  for (const bool isNamed : {false, true}) {
    SCOPED_TRACE(isNamed);
    JournalSearchIndex index(*package);
    isNamed ? index.bringUpToDate({uuidOf(1) + u".plist"_s, copyName(1), copyName(1, 1)}) : index.bringUpToDate();
    EXPECT_EQ(found(index, u"lake"_s), QStringList{u"at the sea"_s});
    EXPECT_EQ(found(index, u"sea"_s), QStringList{u"at the sea"_s});
    EXPECT_EQ(found(index, u"\"sea at\""_s), QStringList());
    EXPECT_EQ(found(index), (QStringList{u"in the hills"_s, u"at the sea"_s}));
    EXPECT_EQ(index.entryWithUUID(uuidOf(1))->otherVersions, 2);
    EXPECT_EQ(index.entryWithUUID(uuidOf(2))->otherVersions, 0);
    EXPECT_EQ(index.conflicts(), (QList<ConflictedEntry>{{uuidOf(1), {copyName(1), copyName(1, 1)}}}));
    EXPECT_TRUE(index.damagedEntries().isEmpty());
    EXPECT_EQ(index.uuidsWithPrefix(uuidOf(1), 5), QStringList{uuidOf(1)});
    EXPECT_FALSE(index.bringUpToDate().hasNews());
  }
}

TEST_F(ConflictIndexTest, ChangesOfACopyAreChangesOfItsEntry) {
  struct Step {
    const char* about;
    std::function<void()> change;
    QStringList lake, pond;
    qsizetype versions;
  };
  const QStringList none;
  const QStringList one{u"at the sea"_s};
  const QList<Step> steps{
      {"none yet", [this] { write(1, u"at the sea"_s); }, none, none, 0},
      {"a copy comes", [this] { writeCopy(1, u"lake"_s); }, one, none, 1},
      {"another", [this] { writeCopy(1, u"pond"_s, 1); }, one, one, 2},
      {"is written to", [this] { writeCopy(1, u"puddle"_s, 1); }, one, none, 2},
      {"one goes", [this] { QFile::remove(copyPath(1)); }, none, none, 1},
      {"the entry changes", [this] { write(1, u"at the sea"_s, 1'700'000'001); }, none, none, 1},
      {"all have gone", [this] { QFile::remove(copyPath(1, 1)); }, none, none, 0},
  };
  JournalSearchIndex all(*package, {.isInMemory = true});
  JournalSearchIndex named(*package, {.isInMemory = true});
  for (const Step& step : steps) {
    SCOPED_TRACE(step.about);
    step.change();
    EXPECT_TRUE(all.bringUpToDate().hasNews());
    EXPECT_TRUE(named.bringUpToDate({uuidOf(1) + u".plist"_s, copyName(1), copyName(1, 1)}).hasNews());
    for (JournalSearchIndex* index : {&all, &named}) {
      EXPECT_EQ(found(*index, u"lake"_s), step.lake);
      EXPECT_EQ(found(*index, u"pond"_s), step.pond);
      EXPECT_EQ(index->entryWithUUID(uuidOf(1))->otherVersions, step.versions);
    }
  }
}

TEST_F(ConflictIndexTest, IsRememberedAndSeesWhatHappenedMeanwhile) {
  write(1, u"at the sea"_s);
  writeCopy(1, u"lake"_s);
  writeCopy(2, u"alone"_s);
  {
    JournalSearchIndex index(*package);
    index.bringUpToDate();
    settle(index);
  }
  {
    JournalSearchIndex index(*package);
    EXPECT_FALSE(index.bringUpToDate().hasNews());
    EXPECT_EQ(found(index, u"lake"_s).size(), 1);
    EXPECT_EQ(index.conflicts().size(), 2);
  }
  // In the file itself: no name has changed.
  QFile copy(copyPath(1));
  ASSERT_TRUE(copy.open(QIODevice::ReadWrite));
  const QByteArray bytes = copy.readAll().replace("lake", "pond");
  ASSERT_TRUE(copy.seek(0) && copy.write(bytes) == bytes.size());
  copy.close();
  QFile::remove(copyPath(2));
  JournalSearchIndex index(*package);
  EXPECT_TRUE(index.bringUpToDate().hasNews());
  EXPECT_EQ(found(index, u"pond"_s).size(), 1);
  EXPECT_EQ(index.conflicts().size(), 1);
}

TEST_F(ConflictIndexTest, AMissingOrDamagedEntryWithACopyIsAConflictToo) {
  writeCopy(1, u"alone"_s);
  writeBytes(pathOf(2), "half of an ent");
  writeCopy(2, u"whole"_s);
  JournalSearchIndex index(*package, {.isInMemory = true});
  EXPECT_TRUE(index.bringUpToDate().hasNews());
  EXPECT_EQ(index.conflicts().size(), 2);
  ASSERT_EQ(index.damagedEntries().size(), 1);
  EXPECT_EQ(index.damagedEntries()[0].uuid, uuidOf(2));
  EXPECT_EQ(found(index), QStringList());
  QDir(package->entriesFolder()).removeRecursively();
  index.bringUpToDate();
  EXPECT_TRUE(index.conflicts().isEmpty());
}

// Brought up to date with every change, it answers as one that is made anew.
TEST_F(ConflictIndexTest, AnswersAsOneMadeAnewWhateverComesAndGoes) {
  std::mt19937 random(11);
  const auto below = [&random](unsigned count) { return static_cast<int>(random() % count); };
  const QStringList words{u"sea"_s, u"lake"_s, u"pond"_s, u"hill"_s, u"wood"_s};
  JournalSearchIndex index(*package, {.isInMemory = true});
  for (int round = 0; round < 150; ++round) {
    SCOPED_TRACE(round);
    QStringList names;
    for (int change = below(4); change >= 0; --change) {
      const int number = 1 + below(4);
      const int which = below(3);
      const QString text = words[below(5)] + u' ' + words[below(5)];
      const bool isCopy = which < 2;
      if (below(3) == 0)
        QFile::remove(isCopy ? copyPath(number, which) : pathOf(number));
      else if (isCopy)
        writeCopy(number, text, which);
      else
        write(number, text);
      names << (isCopy ? copyName(number, which) : uuidOf(number) + u".plist"_s);
    }
    if (below(2) == 0)
      index.bringUpToDate(names);
    else
      index.bringUpToDate();
    JournalSearchIndex fresh(*package, {.isInMemory = true});
    fresh.bringUpToDate();
    EXPECT_EQ(index.conflicts(), fresh.conflicts());
    for (const QString& word : words + QStringList{QString()}) {
      QStringList expected = found(fresh, word);
      QStringList answered = found(index, word);
      // Entries of the same second are in the order in which they were written.
      expected.sort();
      answered.sort();
      ASSERT_EQ(answered, expected) << word.toStdString();
    }
  }
}

TEST_F(ConflictIndexTest, AJournalWhoseOwnFileComesLaterIsWaitedFor) {
  write(1, u"at the sea"_s);
  const QString properties = package->url().toLocalFile() + u"/Journal.plist"_s;
  const QByteArray bytes = contentsOfFile(properties).value_or("");
  ASSERT_TRUE(QFile::remove(properties));
  JournalIndexService service({.isInMemory = true});
  QObject asker;
  qint64 total = 0;
  service.ask(&asker, question({}), [&](const JournalAnswer& answer) { total = answer.total; });
  service.setJournal(package->url());
  ASSERT_TRUE(runUntil([&] { return service.error().has_value(); }));
  EXPECT_EQ(service.error()->code, JournalError::NotHereYet);
  writeBytes(properties, bytes);
  EXPECT_TRUE(runUntil([&] { return total == 1 && !service.error(); }));
}

TEST_F(ConflictIndexTest, WhatNobodyHasToDecideIsDoneByTheService) {
  write(1, u"at the sea"_s);
  writeCopy(1, u"at the sea"_s);
  writeCopy(2, u"alone"_s);
  write(3, u"here"_s);
  writeCopy(3, u"there"_s);
  JournalIndexService service({.isInMemory = true});
  QObject asker;
  qint64 total = 0;
  service.ask(&asker, question({}), [&](const JournalAnswer& answer) { total = answer.total; });
  service.setJournal(package->url());
  // It waits until nothing has happened for some seconds.
  const auto isDone = [&] { return total == 3; };
  for (int turn = 0; turn < 12 && !isDone(); ++turn) runUntil(isDone);
  EXPECT_TRUE(isDone());
  std::optional<QList<ConflictedEntry>> conflicts;
  service.conflicts(&asker, [&](const QList<ConflictedEntry>& known) { conflicts = known; });
  EXPECT_TRUE(runUntil([&] { return conflicts.has_value(); }));
  EXPECT_EQ(conflicts, (QList<ConflictedEntry>{{uuidOf(3), {copyName(3)}}}));
  EXPECT_FALSE(QFile::exists(copyPath(1)));
  EXPECT_TRUE(QFile::exists(pathOf(2)));
}

}  // namespace quillo
