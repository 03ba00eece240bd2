// What is left of an entry when its writer is killed, or the disk is full or cannot be written.

#include "JournalFixture.h"
#include "SavedText.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalIndex.h"
#include "tests/support/SmallDisk.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QThread>

namespace quillo {

using namespace Qt::StringLiterals;

using EntrySavingCrashTest = JournalFixture;

TEST_F(EntrySavingCrashTest, AKillLeavesTheOldEntryOrTheNewOne) {
  const auto entry = saved(savedText(0));
  QRandomGenerator random(20140310);
  int saves = 0;
  // Rounds enough for 200 saves even on a slow disk, where a round has at least one.
  for (int round = 0; round < 40 || (saves < 200 && round < 240); ++round) {
    QProcess saver;
    saver.start(QStringLiteral(QUILLO_ENTRY_SAVER), {package->url().toLocalFile(), entry->uuid()});
    ASSERT_TRUE(saver.waitForReadyRead(30'000)) << saver.readAllStandardError().toStdString();
    // The moment of the kill is the test: there is no clock to fake.
    QThread::usleep(random.bounded(20'000));
    saver.kill();
    ASSERT_TRUE(saver.waitForFinished(30'000));
    ASSERT_EQ(saver.exitStatus(), QProcess::CrashExit) << saver.readAllStandardError().toStdString();

    QByteArray output = saver.readAllStandardOutput();
    output.truncate(output.lastIndexOf('\n'));  // the last line may be cut
    const QList<QByteArray> numbers = output.split('\n');
    saves += static_cast<int>(numbers.size());
    Error error;
    const auto read = reread(entry->uuid(), &error);
    ASSERT_TRUE(read) << error.description().toStdString();
    ASSERT_GE(numberOfSavedText(read->string()), numbers.last().toInt());
    const QLJournalIndex index(package);
    ASSERT_EQ(index.entries().size(), 1);
    ASSERT_TRUE(index.damagedEntries().isEmpty());
  }
  EXPECT_GE(saves, 200);
  JournalFolder::open(package->entriesFolder(), nullptr)->removeLeftovers();
  EXPECT_EQ(everythingIn(package->entriesFolder()), QStringList{entry->uuid() + u".plist"_s});
}

TEST_F(EntrySavingCrashTest, AFullDiskLeavesTheOldEntry) {
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << "cannot mount a small disk to fill: " << disk.reason();
  package = make(home.path(u"disk/Full.quillojournal"_s));
  const auto entry = saved(u"old"_s);
  const QByteArray before = bytesOf(entryPath(entry->uuid()));
  const auto modified = entry->modificationDate();

  entry->setString(QString(1'000'000, u'x'));
  Error error;
  EXPECT_FALSE(entry->saveToJournal(package.get(), &error));
  EXPECT_EQ(error.code, JournalError::OutOfSpace);
  EXPECT_TRUE(error.localizedDescription.contains(entryPath(entry->uuid()))) << error.description().toStdString();
  EXPECT_TRUE(error.localizedDescription.contains(u"No space left"_s)) << error.description().toStdString();
  EXPECT_EQ(entry->modificationDate(), modified);
  EXPECT_EQ(bytesOf(entryPath(entry->uuid())), before);
  EXPECT_EQ(everythingIn(package->entriesFolder()).size(), 1);

  const auto unsaved = QLJournalEntryFile::newEntry();
  unsaved->setString(entry->string());
  EXPECT_FALSE(unsaved->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(unsaved->fileURLForEntryProperties());

  // With room again, the same entry saves.
  entry->setString(u"new"_s);
  EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));

  QFile filler(home.path(u"disk/filler"_s));
  ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
  filler.write(QByteArray(1'000'000, 'x'));  // as much of it as there is room for
  filler.close();
  EXPECT_FALSE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"disk/New"_s)), true, &error));
  EXPECT_EQ(error.code, JournalError::OutOfSpace) << error.description().toStdString();
  EXPECT_EQ(everythingIn(home.path(u"disk"_s)), (QStringList{u"Full.quillojournal"_s, u"filler"_s}));
}

TEST_F(EntrySavingCrashTest, AReadOnlyJournalOpensButDoesNotSave) {
  SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << "cannot mount a disk to make read-only: " << disk.reason();
  const auto made = make(home.path(u"disk/Mine.quillojournal"_s));
  package = made;
  const auto entry = saved(u"old"_s);
  ASSERT_TRUE(disk.makeReadOnly());

  package = QLJournalPackageFile::openPackage(made->url(), false, nullptr);
  ASSERT_TRUE(package);
  EXPECT_EQ(QLJournalIndex(package).entries().size(), 1);
  Error error;
  EXPECT_FALSE(entry->saveToJournal(package.get(), &error));
  EXPECT_EQ(error.code, JournalError::NotWritable);
  EXPECT_TRUE(error.localizedDescription.contains(entryPath(entry->uuid()))) << error.description().toStdString();
  EXPECT_FALSE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"disk/New"_s)), true, &error));
  EXPECT_EQ(error.code, JournalError::NotWritable) << error.description().toStdString();
}

}  // namespace quillo
