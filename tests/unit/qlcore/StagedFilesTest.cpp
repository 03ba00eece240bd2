#include "qlcore/JournalFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

class StagedFilesTest : public testing::Test {
 protected:
  void write(const QString& name, const QByteArray& bytes) const {
    QFile file(directory.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }
  [[nodiscard]] QByteArray bytesOf(const QString& name) const { return *folder->readFile(name, nullptr); }
  [[nodiscard]] QStringList names() const {
    return QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  }

  QTemporaryDir directory;
  std::optional<JournalFolder> folder = JournalFolder::open(directory.path(), nullptr);
};

TEST_F(StagedFilesTest, WhatHasNotTakenItsPlaceIsGone) {
  write(u"a.plist"_s, "old a");
  write(u"b.plist"_s, "old b");
  {
    StagedFiles files = folder->stage();
    ASSERT_TRUE(files.add(u"a.plist"_s, "new a", nullptr) && files.add(u"b.plist"_s, "new b", nullptr) &&
                files.add(u"c.plist"_s, "new c", nullptr) && files.sync(nullptr));
    EXPECT_EQ(folder->propertyListNames(nullptr)->size(), 2);
    EXPECT_EQ(bytesOf(u"a.plist"_s), "old a");
    ASSERT_TRUE(files.put(0, nullptr) && files.put(2, nullptr) && files.syncFolder(nullptr));
  }
  EXPECT_EQ(names(), QStringList({u"a.plist"_s, u"b.plist"_s, u"c.plist"_s}));
  EXPECT_EQ(bytesOf(u"a.plist"_s), "new a");
  EXPECT_EQ(bytesOf(u"b.plist"_s), "old b");
  EXPECT_EQ(bytesOf(u"c.plist"_s), "new c");
}

TEST_F(StagedFilesTest, OnlyAFileGivesWay) {
  ASSERT_TRUE(QFile::link(u"/nowhere"_s, directory.filePath(u"link.plist"_s)));
  ASSERT_TRUE(QDir(directory.path()).mkdir(u"folder.plist"_s));
  for (const QString& name : {u"link.plist"_s, u"folder.plist"_s}) {
    StagedFiles files = folder->stage();
    Error error;
    EXPECT_FALSE(files.add(name, "new", &error));
    EXPECT_TRUE(error.localizedDescription.contains(name)) << error.localizedDescription.toStdString();
  }
  EXPECT_EQ(names(), QStringList({u"folder.plist"_s, u"link.plist"_s}));
}

}  // namespace
