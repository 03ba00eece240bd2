#include "IndexFixture.h"
#include "qlcore/index/JournalIndexService.h"
#include "tests/support/EventLoop.h"
#include "tests/support/SmallDisk.h"

#include <QCoreApplication>

#include <sys/mount.h>
#include <unistd.h>

namespace quillo {

using namespace Qt::StringLiterals;

// What the system may refuse or take away while a journal is watched and indexed: answers stay right.
class JournalFaultsTest : public IndexFixture {
 protected:
  // Has the standing question after "sea" answered for the journal `at`.
  void watch(JournalIndexService& service, const QUrl& at) {
    service.ask(&asker, question(u"sea"_s), [this](const JournalAnswer& answer) {
      texts.clear();
      for (const IndexedEntry& entry : answer.entries) texts << entry.text;
    });
    service.setJournal(at);
    ASSERT_TRUE(runUntil([&] { return service.isUpToDate(); }));
  }
  bool isAnswered(const QStringList& expected) {
    return runUntil([&] { return texts == expected; });
  }

  QObject asker;
  QStringList texts{u"not answered"_s};
};

TEST_F(JournalFaultsTest, MoreChangesThanTheKernelKeepsAreNoticed) {
  write(1, u"sea"_s);
  write(2, u"land"_s);
  write(3, u"land"_s);
  JournalIndexService service;
  watch(service, package->url());
  ASSERT_TRUE(isAnswered({u"sea"_s}));
  QFile limit(u"/proc/sys/fs/inotify/max_queued_events"_s);
  const int most = limit.open(QIODevice::ReadOnly) ? limit.readAll().trimmed().toInt() : 0;
  if (most <= 0 || most > 100'000) GTEST_SKIP() << "the kernel keeps " << most;
  // In turns, since the kernel joins what is the same as before; nothing is read meanwhile.
  const QByteArray bytes = contentsOfFile(pathOf(1)).value_or("");
  for (int i = 0; i < most; ++i) writeInPlace(1 + i % 2, bytes);
  // Nothing is told of this one any more.
  writeInPlace(3, QByteArray(bytes).replace("sea", "sea too"));
  EXPECT_TRUE(runUntil([&] { return texts.contains(u"sea too"_s); }));
  // And then of others again.
  write(4, u"sea four"_s);
  EXPECT_TRUE(runUntil([&] { return texts.contains(u"sea four"_s); }));
}

TEST_F(JournalFaultsTest, ADiskMayBeUnmountedAndComeBack) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting needs root";
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  const QByteArray place = QFile::encodeName(home.path(u"disk"_s));
  const QString path = home.path(u"disk/Mine.quillojournal"_s);
  const auto putOnDisk = [&](const QString& text) {
    package = open(path, true);
    write(1, text);
  };
  putOnDisk(u"sea"_s);
  JournalIndexService service;
  watch(service, package->url());
  ASSERT_TRUE(isAnswered({u"sea"_s}));
  EXPECT_TRUE(service.isWatching());
  // Nothing of ours keeps the disk from being taken out.
  ASSERT_EQ(::umount2(place.constData(), 0), 0) << std::strerror(errno);
  EXPECT_TRUE(runUntil([&] { return service.error().has_value(); }));
  EXPECT_EQ(texts, QStringList{u"sea"_s});
  // Another one.
  ASSERT_EQ(::mount("tmpfs", place.constData(), "tmpfs", 0, "size=256k"), 0) << std::strerror(errno);
  // It is still empty when its coming is noticed.
  handlePendingEvents();
  putOnDisk(u"sea too"_s);
  EXPECT_TRUE(isAnswered({u"sea too"_s}));
  EXPECT_FALSE(service.error());
  write(2, u"sea two"_s, 1'800'000'000);
  EXPECT_TRUE(isAnswered({u"sea two"_s, u"sea too"_s}));
}

// Run by the next one, where there are fewer watches than it takes.
TEST_F(JournalFaultsTest, DISABLED_WithoutWatches) {
  write(1, u"sea"_s);
  JournalIndexService service;
  watch(service, package->url());
  ASSERT_TRUE(isAnswered({u"sea"_s}));
  ASSERT_FALSE(service.isWatching());
  // Nobody tells of it: whoever asks, or comes back to the window, is answered rightly.
  write(2, u"sea two"_s, 1'800'000'000);
  int asked = -1;
  service.ask(&service, question(u"two"_s),
              [&](const JournalAnswer& answer) { asked = static_cast<int>(answer.total); });
  EXPECT_TRUE(runUntil([&] { return asked == 1; }));
  EXPECT_TRUE(isAnswered({u"sea two"_s, u"sea"_s}));
  write(3, u"sea three"_s, 1'900'000'000);
  service.compare();
  EXPECT_TRUE(isAnswered({u"sea three"_s, u"sea two"_s, u"sea"_s}));
  // As soon as there are some again, they are used.
  QFile limit(u"/proc/sys/user/max_inotify_watches"_s);
  ASSERT_TRUE(limit.open(QIODevice::WriteOnly) && limit.write("100") == 3);
  limit.close();
  service.compare();
  EXPECT_TRUE(service.isWatching());
  write(4, u"sea four"_s, 2'000'000'000);
  EXPECT_TRUE(isAnswered({u"sea four"_s, u"sea three"_s, u"sea two"_s, u"sea"_s}));
}

TEST_F(JournalFaultsTest, WithoutWatchesChangesAreLookedFor) {
  // The limit is that of a set of users of its own.
  for (const QString& most : {u"0"_s, u"1"_s, u"2"_s}) {
    QProcess limited;
    limited.setProcessChannelMode(QProcess::MergedChannels);
    limited.start(
        u"unshare"_s,
        {u"-Ur"_s, u"sh"_s, u"-c"_s,
         u"echo %1 >/proc/sys/user/max_inotify_watches || exit 77; exec \"$0\" --gtest_also_run_disabled_tests "
         "--gtest_filter=JournalFaultsTest.DISABLED_WithoutWatches"_s.arg(most),
         QCoreApplication::applicationFilePath()});
    ASSERT_TRUE(limited.waitForStarted() && limited.waitForFinished(60'000));
    const QByteArray said = limited.readAll();
    if (limited.exitCode() == 77 || said.contains("unshare failed")) GTEST_SKIP() << said.constData();
    EXPECT_EQ(limited.exitCode(), 0) << most.toStdString() << ": " << said.constData();
  }
}

// Whatever befalls the cache, before the index is opened or while it is open.
TEST_F(JournalFaultsTest, ACacheThatCannotBeUsedStopsNobody) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting needs root";
  const SmallDisk ofItsOwn(home.path(u"disk"_s));
  if (!ofItsOwn.isMounted()) GTEST_SKIP() << ofItsOwn.reason();
  const QString cache = home.path(u".cache/quillo"_s);
  const QByteArray place = QFile::encodeName(cache);
  const auto bind = [&](unsigned long flags) {
    // The same file system, so that the journal is not taken for one of another disk.
    return ::mount(place.constData(), place.constData(), nullptr, MS_BIND, nullptr) == 0 &&
           ::mount(nullptr, place.constData(), nullptr, MS_REMOUNT | MS_BIND | flags, nullptr) == 0;
  };
  struct Harm {
    const char* name;
    std::function<bool()> begin;
    std::function<void()> end;
  };
  const Harm harms[] = {
      {"read-only", [&] { return bind(MS_RDONLY); }, [&] { ::umount2(place.constData(), MNT_DETACH); }},
      {"a file in the place of the folder",
       [&] {
         QDir(cache).removeRecursively();
         writeBytes(cache, "x");
         return true;
       },
       [&] { QFile::remove(cache); }},
      {"a folder in the place of the note",
       [&] {
         const QString note = databases().value(0) + u"-state"_s;
         return QFile::remove(note) && QDir().mkpath(note + u"/x"_s);
       },
       [&] { QDir(cache).removeRecursively(); }},
  };
  int number = 0;
  for (const bool isOpen : {false, true}) {
    for (const Harm& harm : harms) {
      SCOPED_TRACE(std::string(harm.name) + (isOpen ? ", while it is open" : ""));
      const QString text = u"word%1"_s.arg(++number);
      write(1, text);
      write(2, u"gone"_s);
      auto index = std::make_unique<JournalSearchIndex>(*package);
      index->bringUpToDate();
      if (!isOpen) index.reset();
      ASSERT_TRUE(harm.begin());
      if (!isOpen) {
        index = std::make_unique<JournalSearchIndex>(*package);
        index->bringUpToDate();
      }
      EXPECT_EQ(found(*index, text).size(), 1);
      write(1, text + u" changed"_s);
      ASSERT_TRUE(QFile::remove(pathOf(2)));
      EXPECT_FALSE(index->bringUpToDate().error);
      EXPECT_EQ(found(*index), QStringList{text + u" changed"_s});
      write(1, text + u" again"_s);
      EXPECT_FALSE(index->bringUpToDate({uuidOf(1) + u".plist"_s}).error);
      EXPECT_EQ(found(*index), QStringList{text + u" again"_s});
      while (index->tidyUp()) continue;
      index.reset();
      harm.end();
      // And when it is over.
      JournalSearchIndex after(*package);
      after.bringUpToDate();
      EXPECT_EQ(found(after), QStringList{text + u" again"_s});
      EXPECT_FALSE(after.isInMemory());
    }
  }
}

// The disk fills up under an index that was whole.
TEST_F(JournalFaultsTest, ADiskThatFillsUpStopsNobody) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting needs root";
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  package = open(home.path(u"disk/Mine.quillojournal"_s), true);
  write(1, u"sea"_s);
  write(2, u"land"_s);
  const JournalSearchIndex::Options options{false, 1024, 0, home.path(u"disk/cache"_s)};
  auto index = std::make_unique<JournalSearchIndex>(*package, options);
  index->bringUpToDate();
  ASSERT_FALSE(index->isInMemory());
  QFile filler(home.path(u"disk/filler"_s));
  ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
  while (filler.write(QByteArray(4096, 'x')) == 4096) continue;
  filler.close();
  // Over what is there, which needs no room.
  const QByteArray bytes = contentsOfFile(pathOf(1)).value_or("");
  writeInPlace(2, QByteArray(bytes).replace("sea", "sun"));
  EXPECT_FALSE(index->bringUpToDate().error);
  EXPECT_TRUE(index->isInMemory());
  EXPECT_EQ(found(*index, u"sun"_s).size(), 1);
  EXPECT_EQ(found(*index, u"land"_s).size(), 0);
  index = std::make_unique<JournalSearchIndex>(*package, options);
  EXPECT_FALSE(index->bringUpToDate().error);
  EXPECT_EQ(found(*index, u"sun"_s).size(), 1);
  ASSERT_TRUE(filler.remove());
  index = std::make_unique<JournalSearchIndex>(*package, options);
  index->bringUpToDate();
  EXPECT_EQ(found(*index, u"sun"_s).size(), 1);
  EXPECT_FALSE(index->isInMemory());
}

}  // namespace quillo
