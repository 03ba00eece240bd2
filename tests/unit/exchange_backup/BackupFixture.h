#pragma once

#include "exchange/backup/BackupCheck.h"
#include "exchange/backup/BackupFolder.h"
#include "exchange/backup/BackupRestore.h"
#include "exchange/backup/JournalBackup.h"
#include "foundation/FileContents.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace quillo {

// A home with a journal of two entries, and a folder for backups.
class BackupFixture : public testing::Test {
 protected:
  using Outcome = JournalBackup::Outcome;

  void SetUp() override {
    package = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(journal), /*create=*/true, nullptr);
    ASSERT_TRUE(package);
    addEntry(QStringLiteral("one"));
    addEntry(QStringLiteral("two \U0001F4D3"));
  }

  QString addEntry(const QString& text) const {
    const auto entry = QLJournalEntryFile::newEntry();
    entry->setString(text);
    EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));
    return entry->fileURLForEntryProperties()->toLocalFile();
  }
  [[nodiscard]] JournalBackup backup() const { return {.journal = journal, .folder = folder}; }
  [[nodiscard]] BackupRestore restore(const QString& archive) const {
    return {.archive = archive, .journal = home.path(QStringLiteral("New.quillojournal"))};
  }
  // Names, the hidden ones, too.
  static QStringList namesIn(const QString& path) {
    return QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  }
  // Every file with its contents, and every folder.
  static std::map<QString, QByteArray> treeOf(const QString& path) {
    std::map<QString, QByteArray> tree;
    for (QDirIterator it(path, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
         it.hasNext();) {
      const QFileInfo file(it.next());
      QFile contents(file.filePath());
      tree[file.filePath().sliced(path.size())] =
          file.isDir() || !contents.open(QFile::ReadOnly) ? "folder" : contents.readAll();
    }
    return tree;
  }

  TestHome home;
  QString journal = home.path(QStringLiteral("Jöurnal.quillojournal"));
  QString folder = home.path(QStringLiteral("Backups"));
  std::shared_ptr<QLJournalPackageFile> package;
};

}  // namespace quillo
