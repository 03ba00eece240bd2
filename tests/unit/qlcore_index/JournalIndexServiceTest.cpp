#include "IndexFixture.h"
#include "qlcore/index/JournalIndexService.h"
#include "tests/support/EventLoop.h"

namespace quillo {

using namespace Qt::StringLiterals;

class JournalIndexServiceTest : public IndexFixture {
 protected:
  JournalIndexServiceTest() {
    service.ask(&asker, question(u"sea"_s), [this](const JournalAnswer& answer) {
      texts.clear();
      for (const IndexedEntry& entry : answer.entries) texts << entry.text;
    });
  }
  // Whether the standing question comes to be answered so.
  bool isAnswered(const QStringList& expected) {
    return runUntil([&] { return texts == expected; });
  }

  JournalIndexService service;
  QObject asker;
  QStringList texts{u"not answered"_s};
};

TEST_F(JournalIndexServiceTest, AnswersAgainWheneverTheJournalChanges) {
  write(1, u"sea"_s);
  service.setJournal(package->url());
  EXPECT_TRUE(isAnswered({u"sea"_s}));
  EXPECT_TRUE(runUntil([&] { return service.isUpToDate(); }));
  EXPECT_TRUE(service.isWatching());

  // By another program: made, written to in place, removed.
  write(2, u"sea two"_s, 1'700'000'001);
  EXPECT_TRUE(isAnswered({u"sea two"_s, u"sea"_s}));
  QFile file(pathOf(2));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  const QByteArray bytes = file.readAll().replace("two", "too");
  file.seek(0);
  file.write(bytes);
  file.close();
  EXPECT_TRUE(isAnswered({u"sea too"_s, u"sea"_s}));
  ASSERT_TRUE(QFile::remove(pathOf(1)));
  EXPECT_TRUE(isAnswered({u"sea too"_s}));

  // The folder is removed, comes back, is replaced by another.
  const QString folder = package->entriesFolder();
  ASSERT_TRUE(QDir(folder).removeRecursively());
  EXPECT_TRUE(isAnswered({}));
  ASSERT_TRUE(QDir().mkdir(folder));
  write(3, u"sea three"_s);
  EXPECT_TRUE(isAnswered({u"sea three"_s}));
  ASSERT_TRUE(QDir().rename(folder, home.path(u"aside"_s)));
  EXPECT_TRUE(isAnswered({}));
  ASSERT_TRUE(QDir().rename(home.path(u"aside"_s), folder));
  EXPECT_TRUE(isAnswered({u"sea three"_s}));
  // More at once than are looked at one by one.
  for (int i = 100; i < 400; ++i) write(i, u"land"_s);
  write(4, u"sea four"_s, 1'700'000'002);
  EXPECT_TRUE(isAnswered({u"sea four"_s, u"sea three"_s}));

  // The journal goes away as a whole; what is known of it stays until it is back.
  const QString away = home.path(u"away"_s);
  ASSERT_TRUE(QDir().rename(package->url().toLocalFile(), away));
  EXPECT_TRUE(runUntil([&] { return service.error().has_value(); }));
  ASSERT_TRUE(QDir().rename(away, package->url().toLocalFile()));
  write(5, u"sea five"_s, 1'700'000'003);
  EXPECT_TRUE(isAnswered({u"sea five"_s, u"sea four"_s, u"sea three"_s}));
  EXPECT_FALSE(service.error());
}

// Both use one index: what the other has read into it already is news to whoever asked here before.
TEST_F(JournalIndexServiceTest, AnswersAnewWhereAnotherProgramWasQuicker) {
  service.setJournal(package->url());
  qint64 total = -1;
  service.ask(&asker, {}, [&](const JournalAnswer& answer) { total = answer.total; });
  ASSERT_TRUE(runUntil([&] { return service.isUpToDate() && total == 0; }));
  write(1, u"sea"_s, 1'700'000'000);
  JournalSearchIndex other(*package);
  ASSERT_EQ(other.bringUpToDate().changed, 1);
  EXPECT_TRUE(runUntil([&] { return total == 1; }));
}

TEST_F(JournalIndexServiceTest, AnswersOnlyTheLatestQuestionOfEach) {
  for (int i = 0; i < 300; ++i) write(i, i % 2 == 0 ? u"sea"_s : u"land"_s, 1'700'000'000 + i);
  service.setJournal(package->url());
  ASSERT_TRUE(runUntil([&] { return service.isUpToDate(); }));
  int superseded = 0;
  int latest = 0;
  for (int i = 0; i < 50; ++i) service.ask(&asker, question(u"land"_s), [&](const JournalAnswer&) { ++superseded; });
  service.ask(&asker, question(u"land"_s),
              [&](const JournalAnswer& answer) { latest = static_cast<int>(answer.total); });
  QList<JournalCount> counts;
  service.count(&asker, {}, JournalCountBy::Day, [&](const QList<JournalCount>& answer) { counts = answer; });
  std::optional<IndexedEntry> one;
  service.entry(&asker, uuidOf(7), [&](const std::optional<IndexedEntry>& entry) { one = entry; });
  int unheard = 0;
  auto gone = std::make_unique<QObject>();
  service.ask(gone.get(), {}, [&](const JournalAnswer&) { ++unheard; });
  gone.reset();
  EXPECT_TRUE(runUntil([&] { return latest == 150 && counts.size() == 1 && one; }));
  EXPECT_EQ(superseded, 0);
  EXPECT_EQ(unheard, 0);

  // Another journal, and none.
  const auto other = open(home.path(u"Other.quillojournal"_s), true);
  service.setJournal(other->url());
  EXPECT_TRUE(runUntil([&] { return latest == 0; }));
  service.setJournal(std::nullopt);
  EXPECT_FALSE(service.isUpToDate());
}

TEST_F(JournalIndexServiceTest, EndsAtOnceInTheMiddleOfReading) {
  for (int i = 0; i < 3000; ++i) write(i, u"sea"_s, 1'700'000'000 + i);
  JournalIndexService ending;
  bool isReading = false;
  QObject::connect(&ending, &JournalIndexService::changed, [&] { isReading = true; });
  ending.setJournal(package->url());
  EXPECT_TRUE(runUntil([&] { return isReading; }));
  ending.setJournal(std::nullopt);
  JournalSearchIndex index(*package);
  EXPECT_TRUE(index.bringUpToDate().isComplete);
  EXPECT_EQ(index.ask(question(u"sea"_s)).total, 3000);
}

}  // namespace quillo
