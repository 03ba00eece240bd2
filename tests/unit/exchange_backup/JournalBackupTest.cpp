#include "BackupFixture.h"
#include "exchange/backup/BackupName.h"
#include "exchange/backup/BackupRecord.h"
#include "tests/support/SmallDisk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

void write(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size()) << path.toStdString();
}

// What cannot be made smaller.
QByteArray noise(int size) {
  std::mt19937 random(1);
  QByteArray bytes(size, 0);
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

using JournalBackupTest = BackupFixture;

TEST_F(JournalBackupTest, ComesBackAsItWas) {
  // What other programs and later versions may have put there, a damaged entry, and what does not fit into memory at
  // once.
  QDir(journal).mkpath(u"Media/deep/er"_s);
  write(journal + u"/Media/deep/er/with\nline \\ break"_s, "x");
  write(journal + u"/Media/empty"_s, {});
  const QByteArray noText = QFile::encodeName(journal) + "/Media/\xff\xfe";
  ASSERT_TRUE(FileDescriptor(::open(noText.constData(), O_CREAT | O_WRONLY, 0600)).isOpen());
  write(journal + u"/Media/"_s + QString(120, QChar(0x00e4)), "long name");
  write(journal + u"/Media/film"_s, QByteArray(17 * 1024 * 1024 + 3, 'f'));
  write(package->entriesFolder() + u"/00000000-0000-4000-8000-000000000000.plist"_s, "damaged");
  // Being written at this moment.
  write(package->entriesFolder() + u"/.00000000-0000-4000-8000-000000000000.plist.1.1.tmp"_s, "half");

  const auto made = backup().run();
  ASSERT_EQ(made.outcome, Outcome::Made) << made.error.description().toStdString();
  EXPECT_EQ(made.entries, 3);
  EXPECT_THAT(made.leftOut, IsEmpty());
  EXPECT_EQ(modeOf(made.path), 0600);

  const auto check = BackupCheck::of(made.path);
  EXPECT_TRUE(check.isWhole()) << check.error->description().toStdString();
  EXPECT_EQ(check.entries, 3);
  EXPECT_THAT(check.damagedEntries, ElementsAre(u"Entries/00000000-0000-4000-8000-000000000000.plist"_s));
  EXPECT_EQ(check.manifest.journalIdentifier, package->identifier());

  const auto restored = restore(made.path).run();
  ASSERT_EQ(restored.outcome, BackupRestore::Outcome::Restored) << restored.error.description().toStdString();
  auto expected = treeOf(journal);
  expected.erase(u"/Entries/.00000000-0000-4000-8000-000000000000.plist.1.1.tmp"_s);
  EXPECT_EQ(treeOf(restored.journal.toLocalFile()), expected);
  // Removed here, since Qt cannot.
  EXPECT_EQ(::unlink((QFile::encodeName(restored.journal.toLocalFile()) + "/Media/\xff\xfe").constData()), 0);
  EXPECT_EQ(::unlink(noText.constData()), 0);
  EXPECT_EQ(modeOf(restored.journal.toLocalFile() + u"/Journal.plist"_s), 0600);

  EXPECT_EQ(restore(made.path).run().error.localizedDescription,
            home.path(u"New.quillojournal: there is something already"_s));
}

TEST_F(JournalBackupTest, TellsWhatCannotBeInABackup) {
  ASSERT_EQ(::symlink("/etc/passwd", QFile::encodeName(journal + u"/link"_s).constData()), 0);
  ASSERT_EQ(::mkfifo(QFile::encodeName(journal + u"/pipe"_s).constData(), 0600), 0);
  const auto made = backup().run();
  ASSERT_EQ(made.outcome, Outcome::Made);
  EXPECT_THAT(made.leftOut, ElementsAre(journal + u"/link: neither a file nor a folder"_s,
                                        journal + u"/pipe: neither a file nor a folder"_s));
  EXPECT_TRUE(made.isComplete);
  EXPECT_TRUE(BackupCheck::of(made.path).isWhole());
}

TEST_F(JournalBackupTest, ThinsOutNothingWhenAFileIsMissing) {
  ASSERT_EQ(backup().run().outcome, Outcome::Made);
  const QString entry = addEntry(u"three"_s);
  JournalBackup run = backup();
  run.thinning = ThinningRule{.newest = 1, .days = 0, .weeks = 0, .most = 1};
  // Read last, and something else by then.
  write(journal + u"/z"_s, "z");
  run.progress = [this](double) {
    const QByteArray path = QFile::encodeName(journal + u"/z"_s);
    ::unlink(path.constData());
    ::mkfifo(path.constData(), 0600);
    return true;
  };
  const auto made = run.run();
  EXPECT_EQ(made.outcome, Outcome::Made);
  EXPECT_THAT(made.leftOut, ElementsAre(journal + u"/z: not a file any more"_s));
  EXPECT_FALSE(made.isComplete);
  EXPECT_THAT(namesIn(folder), SizeIs(2));
}

TEST_F(JournalBackupTest, CountsWhatChangesMeanwhile) {
  JournalBackup run = backup();
  bool isDone = false;
  run.progress = [&](double done) {
    if (done >= 0.5 && !std::exchange(isDone, true)) addEntry(u"late"_s);
    return true;
  };
  const auto made = run.run();
  EXPECT_EQ(made.outcome, Outcome::Made);
  EXPECT_EQ(made.entries, 2);
  EXPECT_EQ(made.changed, 1);
}

TEST_F(JournalBackupTest, IsNoneWhenTheDiskGivesBackOtherBytes) {
  // More than is read at once.
  write(journal + u"/large"_s, noise(1'000'000));
  JournalBackup run = backup();
  run.progress = [this](double done) {
    // Written and not yet compared.
    if (done >= 0.5)
      for (const QString& name : namesIn(folder)) {
        QFile file(folder + u'/' + name);
        if (!file.open(QFile::ReadWrite)) continue;
        file.seek(file.size() / 2);
        file.write("other");
      }
    return true;
  };
  const auto made = run.run();
  EXPECT_EQ(made.outcome, Outcome::Failed);
  EXPECT_FALSE(made.error.localizedDescription.isEmpty());
  EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST_F(JournalBackupTest, StopsAnywhereAndLeavesNothing) {
  const auto first = backup().run();
  for (int calls = 0;; ++calls) {
    JournalBackup run = backup();
    int left = calls;
    run.progress = [&left](double) { return left-- > 0; };
    if (run.run().outcome == Outcome::Made) {
      EXPECT_GT(calls, 5);
      break;
    }
    EXPECT_THAT(namesIn(folder), ElementsAre(BackupName::of(QFileInfo(first.path).fileName())->fileName())) << calls;
  }
  for (int calls = 0;; ++calls) {
    BackupRestore run = restore(first.path);
    int left = calls;
    run.progress = [&left](double) { return left-- > 0; };
    const QStringList before = namesIn(home.path());
    if (run.run().outcome == BackupRestore::Outcome::Restored) break;
    EXPECT_EQ(namesIn(home.path()), before) << calls;
  }
}

TEST_F(JournalBackupTest, IsRefusedWhereItCannotBe) {
  QDir(journal).mkdir(u"inside"_s);
  ASSERT_EQ(::symlink(QFile::encodeName(journal).constData(), QFile::encodeName(home.path(u"way in"_s)).constData()),
            0);
  const auto other =
      QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"B.quillojournal"_s)), true, nullptr);
  QDir().mkdir(home.path(u"locked"_s));
  const FileDescriptor locked(::open(QFile::encodeName(home.path(u"locked"_s)).constData(), O_RDONLY));
  ASSERT_EQ(::flock(locked.number(), LOCK_EX), 0);
  write(home.path(u"file"_s), "x");
  const struct {
    QString journal;
    QString folder;
    QString says;
  } cases[] = {
      {journal, journal, u"inside of a journal"_s},
      {journal, journal + u"/inside"_s, u"inside of a journal"_s},
      {journal, journal + u"/new"_s, u"inside of a journal"_s},
      {journal, home.path(u"way in/inside"_s), u"inside of a journal"_s},
      {journal, other->url().toLocalFile(), u"inside of a journal"_s},
      {journal, home.path(u"locked"_s), u"another backup is being made there"_s},
      {journal, home.path(u"no/such/folder"_s), u"No such file"_s},
      {journal, home.path(u"file"_s), u"Not a directory"_s},
      {home.path(u"locked"_s), folder, u"not a journal"_s},
      {home.path(u"nothing"_s), folder, u"no such folder"_s},
  };
  const auto before = treeOf(home.path());
  for (const auto& one : cases) {
    const auto result = JournalBackup{.journal = one.journal, .folder = one.folder}.run();
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_TRUE(result.error.localizedDescription.contains(one.says))
        << one.says.toStdString() << ": " << result.error.localizedDescription.toStdString();
  }
  EXPECT_EQ(treeOf(home.path()), before);
}

TEST_F(JournalBackupTest, LeavesTheOlderOneWholeOnAFullDisk) {
  const SmallDisk disk(folder);
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  const auto first = backup().run();
  ASSERT_EQ(first.outcome, Outcome::Made);
  write(journal + u"/large"_s, noise(400'000));
  const auto second = backup().run();
  EXPECT_EQ(second.outcome, Outcome::Failed);
  EXPECT_EQ(second.error.code, ErrorCode::fileWriteOutOfSpace) << second.error.description().toStdString();
  EXPECT_THAT(namesIn(folder), SizeIs(1));
  EXPECT_TRUE(BackupCheck::of(first.path).isWhole());
  // Neither does a journal that does not fit.
  const auto large = JournalBackup{.journal = journal, .folder = home.path(u"roomy"_s)}.run();
  BackupRestore tight = restore(large.path);
  tight.journal = folder + u"/New.quillojournal"_s;
  const auto restored = tight.run();
  EXPECT_EQ(restored.outcome, BackupRestore::Outcome::Failed);
  EXPECT_TRUE(restored.error.localizedDescription.contains(u"not enough room"_s));
  EXPECT_THAT(namesIn(folder), SizeIs(1));
}

TEST_F(JournalBackupTest, ClearsUpWhatAKilledRunHasLeft) {
  QDir().mkdir(folder);
  const QString left = u".J-2026-01-01-000000.quillojournal.tar.zst.tmp"_s;
  const QStringList others{u".J-2026-01-01-000000.tar.zst.tmp"_s, u"J-2026-01-01-000000.quillojournal.tar.zst.tmp"_s};
  for (const QString& name : others + QStringList{left}) write(folder + u'/' + name, "half");
  const auto made = backup().run();
  const QStringList expected = others + QStringList{QFileInfo(made.path).fileName()};
  EXPECT_THAT(namesIn(folder), testing::UnorderedElementsAreArray(expected));
}

TEST_F(JournalBackupTest, ThinsOutItsOwnOnly) {
  const auto other =
      QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"B.quillojournal"_s)), true, nullptr);
  const auto ofOther = JournalBackup{.journal = other->url().toLocalFile(), .folder = folder}.run();
  const QString garbage = u"J\u00f6urnal-2020-01-01-000000.quillojournal.tar.zst"_s;
  write(folder + u'/' + garbage, "no archive");
  JournalBackup run = backup();
  run.thinning = ThinningRule{.most = 2};
  QStringList names;
  // Within one second or two: each has a name of its own.
  for (int i = 0; i < 4; ++i) {
    const auto made = run.run();
    ASSERT_EQ(made.outcome, Outcome::Made) << made.error.description().toStdString();
    names << QFileInfo(made.path).fileName();
    EXPECT_THAT(made.removed, SizeIs(i < 2 ? 0 : 1));
  }
  EXPECT_THAT(namesIn(folder),
              testing::UnorderedElementsAre(QFileInfo(ofOther.path).fileName(), garbage, names[2], names[3]));
  const auto backups = backupsInFolder(folder, nullptr);
  ASSERT_TRUE(backups);
  EXPECT_THAT(*backups, SizeIs(4));
  EXPECT_FALSE(backups->last().manifest);
  EXPECT_EQ(backups->first().manifest->entries, 2);
}

TEST_F(JournalBackupTest, RecordsWhatBecameOfIt) {
  const UserDirectories& directories = UserDirectories::current();
  EXPECT_EQ(BackupRecord::of(directories), BackupRecord());
  const auto made = BackupRecord::record(backup(), directories);
  BackupRecord record = BackupRecord::of(directories);
  EXPECT_TRUE(record.lastMade);
  EXPECT_EQ(record.lastPath, made.path);

  JournalBackup stopped = backup();
  stopped.progress = [](double) { return false; };
  static_cast<void>(BackupRecord::record(stopped, directories));
  EXPECT_EQ(BackupRecord::of(directories), record);

  JournalBackup impossible = backup();
  impossible.folder = journal;
  static_cast<void>(BackupRecord::record(impossible, directories));
  record = BackupRecord::of(directories);
  EXPECT_TRUE(record.failure.contains(u"inside of a journal"_s));
  EXPECT_EQ(record.lastPath, made.path);

  // Killed in the middle.
  const pid_t child = ::fork();
  if (child == 0) {
    JournalBackup killed = backup();
    killed.progress = [](double) -> bool { ::_exit(0); };
    static_cast<void>(BackupRecord::record(killed, directories));
    ::_exit(1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(BackupRecord::of(directories).failure, u"it was ended before it was done"_s);
  static_cast<void>(BackupRecord::record(backup(), directories));
  EXPECT_EQ(BackupRecord::of(directories).failure, QString());
}

TEST(BackupName, IsKnownAgain) {
  const QDateTime time(QDate(2026, 11, 26), QTime(8, 15, 30));
  for (const QString& journal : {u"Diary"_s, u"A-2026-01-01-000000"_s, u"a\nb"_s, u"-"_s}) {
    const BackupName name{journal, time, 1};
    const auto again = BackupName::of(name.fileName());
    ASSERT_TRUE(again) << journal.toStdString();
    EXPECT_EQ(again->journal, journal);
    EXPECT_EQ(again->begun, time);
    EXPECT_FALSE(BackupName::of(name.temporaryName()));
    EXPECT_TRUE(BackupName::isTemporary(name.temporaryName()));
  }
  EXPECT_EQ((BackupName{u"Diary"_s, time, 2}.fileName()), u"Diary-2026-11-26-081530-2.quillojournal.tar.zst"_s);
  EXPECT_LE((BackupName{QString(240, QChar(0x00e4)), time, 9}.temporaryName().toUtf8().size()), 255);
  for (const QString& other : {u"Diary.tar.zst"_s, u"Diary-2026-13-26-081530.quillojournal.tar.zst"_s,
                               u".Diary-2026-11-26-081530.quillojournal.tar.zst"_s, u""_s})
    EXPECT_FALSE(BackupName::of(other)) << other.toStdString();
}

}  // namespace
}  // namespace quillo
