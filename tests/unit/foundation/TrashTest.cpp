#include "foundation/FileContents.h"
#include "foundation/FileManager.h"
#include "foundation/Trash.h"
#include "foundation/UserDirectories.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class TrashTest : public testing::Test {
 protected:
  QString make(const QString& name) {
    const QString path = home.path(name);
    EXPECT_TRUE(writeFileAtomically(path, "words"));
    return path;
  }
  QString trash() const { return UserDirectories::current().data + u"/Trash"_s; }
  static QStringList namesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  }
  TestHome home;
};

TEST_F(TrashTest, KeepsEachFileWithANoteOfWhereItWas) {
  const QString path = make(u"a ü 100%.plist"_s);
  const auto first = Trash::moveItem(path);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->path, trash() + u"/files/a ü 100%.plist"_s);
  EXPECT_EQ(contentsOfFile(first->path), "words");
  const auto note = contentsOfFile(first->informationPath).value_or("").split('\n');
  ASSERT_EQ(note.size(), 4);
  EXPECT_EQ(note[0], "[Trash Info]");
  EXPECT_EQ(QByteArray::fromPercentEncoding(note[1]), "Path=" + QFile::encodeName(path));
  EXPECT_FALSE(note[1].contains(' '));
  EXPECT_EQ(note[2].size(), qsizetype(sizeof("DeletionDate=2014-03-10T21:00:00") - 1));
  EXPECT_EQ(modeOf(trash()), 0700);

  // The same name again, and a link, whose target stays.
  ASSERT_TRUE(QFile::link(make(u"target"_s), path));
  const auto second = Trash::moveItem(path);
  ASSERT_TRUE(second);
  EXPECT_NE(second->path, first->path);
  EXPECT_TRUE(second->path.endsWith(u".plist"_s));
  EXPECT_TRUE(QFileInfo(second->path).isSymLink());
  EXPECT_TRUE(QFile::exists(home.path(u"target"_s)));

  Error error;
  EXPECT_FALSE(Trash::moveItem(path, &error));
  EXPECT_EQ(error.domain, ErrorDomain::osStatus);
  EXPECT_EQ(error.code, ErrorCode::fileNotFound);
}

TEST_F(TrashTest, OneThatTakesNothingIsAnErrorAndTheFileStays) {
  const auto occupy = [this](const QString& place) {
    return [this, place] {
      QDir(UserDirectories::current().data).removeRecursively();
      QDir().mkpath(QFileInfo(place).path());
      writeFileAtomically(place, "no folder");
    };
  };
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  struct rlimit full = before;
  full.rlim_cur = 0;
  const struct {
    QString place;
    std::function<void()> damage;
  } cases[] = {{trash() + u"/info"_s, occupy(trash() + u"/info"_s)},
               {trash() + u"/files"_s, occupy(trash() + u"/files"_s)},
               {trash(), occupy(trash())},
               {UserDirectories::current().data, occupy(UserDirectories::current().data)},
               {trash() + u"/info"_s, [&] {
                  QFile::remove(UserDirectories::current().data);
                  ::setrlimit(RLIMIT_FSIZE, &full);
                }}};
  const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.place.toStdString());
    const QString path = make(u"kept.plist"_s);
    c.damage();
    Error error;
    EXPECT_FALSE(FileManager::removeItemAtURL(QUrl::fromLocalFile(path), /*moveToTrash=*/true, &error));
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(error.domain, ErrorDomain::osStatus);
    EXPECT_NE(error.code, ErrorCode::fileNotFound);
    EXPECT_TRUE(error.localizedDescription.startsWith(path + u": cannot be moved to the Trash - "_s + c.place))
        << error.description().toStdString();
    EXPECT_EQ(contentsOfFile(path), "words");
    EXPECT_EQ(namesIn(trash() + u"/info"_s), QStringList());
  }
  std::signal(SIGXFSZ, handlerBefore);
}

TEST_F(TrashTest, AnotherFileSystemHasItsOwn) {
  const SmallDisk disk(home.path(u"disk"_s));
  if (!disk.isMounted()) GTEST_SKIP() << "cannot mount a small disk: " << disk.reason();
  const QString user = QString::number(::getuid());
  QDir().mkpath(home.path(u"disk/folder"_s));
  const auto moved = Trash::moveItem(make(u"disk/folder/x"_s));
  ASSERT_TRUE(moved);
  EXPECT_EQ(moved->path, home.path(u"disk/.Trash-%1/files/x"_s.arg(user)));
  EXPECT_TRUE(contentsOfFile(moved->informationPath)->contains("\nPath=folder/x\n"));

  // The administrator's, where it is safe: nobody may remove what is another's.
  const QString common = home.path(u"disk/.Trash"_s);
  QDir().mkdir(common);
  for (const int mode : {0777, 01777}) {
    ASSERT_EQ(::chmod(QFile::encodeName(common).constData(), mode), 0);
    const auto next = Trash::moveItem(make(u"disk/y"_s));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->path.startsWith(common + u'/'), mode == 01777) << next->path.toStdString();
  }
}

}  // namespace
}  // namespace quillo
