#include "JournalFixture.h"
#include "qlcore/QLJournalPackageFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <functional>

namespace quillo {

using namespace Qt::StringLiterals;

class QLJournalPackageFileTest : public JournalFixture {
 protected:
  ~QLJournalPackageFileTest() override { QLJournalPackageFile::setDefaultPackageURLProvider({}); }
};

TEST_F(QLJournalPackageFileTest, IsMadeWholeAndOpensAgain) {
  const QString path = home.path(u"Mine.quillojournal"_s);
  EXPECT_EQ(everythingIn(home.path()), QStringList{u"Mine.quillojournal"_s});
  EXPECT_EQ(everythingIn(path), (QStringList{u".gitattributes"_s, u".gitignore"_s, u".stignore"_s,
                                             u".sync-exclude.lst"_s, u"Entries"_s, u"Journal.plist"_s}));
  EXPECT_TRUE(bytesOf(path + u"/Journal.plist"_s).startsWith("<?xml"));
  EXPECT_EQ(QLJournalEntryFile::canonicalUUID(package->identifier()), package->identifier());

  const auto again = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path + u'/'), false, nullptr);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->identifier(), package->identifier());
  EXPECT_EQ(again->creationDate(), package->creationDate());
  EXPECT_EQ(again->formatVersion(), 1);
  EXPECT_EQ(again->url(), QUrl::fromLocalFile(path));
  EXPECT_EQ(again->entriesURL(), QUrl::fromLocalFile(path + u"/Entries"_s));
}

TEST_F(QLJournalPackageFileTest, RefusesWhatIsNoJournalOfThisVersion) {
  const QString path = home.path(u"Other.quillojournal"_s);
  const QString properties = path + u"/Journal.plist"_s;
  const auto content = [&](const QByteArray& bytes) { return [=, this] { write(properties, bytes); }; };
  const auto version = [&](const PropertyListValue& number) {
    return [=, this] { write(properties, PropertyListDictionary{{u"formatVersion"_s, number}}); };
  };
  const QString mine = home.path(u"Mine.quillojournal/Journal.plist"_s);
  using enum JournalError::Code;
  const struct {
    JournalError::Code code;
    QString says;
    std::function<void()> prepare;  // in an empty folder
  } cases[] = {
      {JournalFileNotFound, u"no such folder"_s, [&] { QDir().rmdir(path); }},
      {JournalFileNotFound, u"no such folder"_s,
       [&] { QDir().rmdir(path), QFile::link(home.path(u"nowhere"_s), path); }},
      {NotAPackage, u"not a folder"_s, [&] { QDir().rmdir(path), write(path, QByteArray("x")); }},
      {NotAPackage, u"has no Journal.plist"_s, [] {}},
      {NotAPackage, u"damaged"_s, content("<plist><dict>")},
      {NotAPackage, u"version"_s, [&] { write(properties, PropertyListDictionary()); }},
      {NotAPackage, u"version"_s, version(0)},
      {NewerFormat, u"made by a newer version"_s, version(2)},
      {NotReadable, u"not a regular"_s, [&] { QDir().mkpath(properties); }},
      {NotReadable, u"not a regular"_s, [&] { ::mkfifo(QFile::encodeName(properties).constData(), 0600); }},
      {NotReadable, u"symbolic link"_s, [&] { QFile::link(mine, properties); }},
  };
  for (const auto& [code, says, prepare] : cases) {
    SCOPED_TRACE(says.toStdString());
    QDir(path).removeRecursively();
    QFile::remove(path);
    QDir().mkdir(path);
    prepare();
    Error error;
    EXPECT_FALSE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), false, &error));
    EXPECT_EQ(error.domain, JournalError::domain);
    EXPECT_EQ(error.code, code) << error.description().toStdString();
    EXPECT_TRUE(error.localizedDescription.contains(says)) << error.localizedDescription.toStdString();
    EXPECT_TRUE(error.localizedDescription.contains(path)) << error.localizedDescription.toStdString();
    EXPECT_FALSE(error.localizedDescription.contains(u'\n'));
  }
  for (const QString& url : {u""_s, u"relative"_s, u"https://quilloapp.example/x"_s, u"file:"_s}) {
    Error error;
    EXPECT_FALSE(QLJournalPackageFile::openPackage(QUrl(url), true, &error)) << url.toStdString();
    EXPECT_EQ(error.code, JournalError::JournalFileNotFound);
  }
}

TEST_F(QLJournalPackageFileTest, RefusesOneWithoutPermission) {
  const bool isRoot = ::geteuid() == 0;
  const QByteArray properties = QFile::encodeName(package->url().toLocalFile() + u"/Journal.plist"_s);
  // Nothing is forbidden to root, so another user asks.
  ::chmod(QFile::encodeName(home.path()).constData(), 0755);
  ::chmod(QFile::encodeName(package->url().toLocalFile()).constData(), 0755);
  ::chmod(properties.constData(), 0);
  if (isRoot && ::seteuid(65534) != 0) GTEST_SKIP() << "cannot act as another user";
  Error error;
  const auto opened = QLJournalPackageFile::openPackage(package->url(), false, &error);
  ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
  EXPECT_FALSE(opened);
  EXPECT_EQ(error.code, JournalError::NotReadable) << error.description().toStdString();
}

TEST_F(QLJournalPackageFileTest, IsNotMadeOverAnything) {
  QDir().mkdir(home.path(u"folder"_s));
  write(home.path(u"file"_s), QByteArray("x"));
  QFile::link(home.path(u"nowhere"_s), home.path(u"link"_s));
  const QStringList before = everythingIn(home.path());
  const struct {
    QString name;
    JournalError::Code code;
  } cases[] = {{u"folder"_s, JournalError::AlreadyExists},     {u"file"_s, JournalError::AlreadyExists},
               {u"link"_s, JournalError::AlreadyExists},       {u"Mine.quillojournal"_s, JournalError::AlreadyExists},
               {u"missing/New"_s, JournalError::WriteFailed},  {u"file/New"_s, JournalError::WriteFailed},
               {QString(300, u'x'), JournalError::WriteFailed}};
  for (const auto& [name, code] : cases) {
    Error error;
    EXPECT_FALSE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(name)), true, &error));
    EXPECT_EQ(error.code, code) << error.description().toStdString();
    EXPECT_EQ(everythingIn(home.path()), before);
  }
  EXPECT_EQ(bytesOf(home.path(u"file"_s)), "x");
}

TEST_F(QLJournalPackageFileTest, OpensThroughALink) {
  const QString link = home.path(u"link"_s);
  ASSERT_TRUE(QFile::link(package->url().toLocalFile(), link));
  const auto linked = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(link), false, nullptr);
  ASSERT_TRUE(linked);
  const auto entry = QLJournalEntryFile::newEntry();
  EXPECT_TRUE(entry->saveToJournal(linked.get(), nullptr));
  EXPECT_TRUE(reread(entry->uuid()));
}

TEST_F(QLJournalPackageFileTest, DefaultPackageIsTheConfiguredOneAndNeverMade) {
  const QString start = u"+[QLJournalPackageFile(OSXAdditions) defaultPackage] Default location is not set - "_s;
  std::optional<QUrl> configured;
  for (const bool hasProvider : {false, true}) {
    LogCapture log;
    if (hasProvider) QLJournalPackageFile::setDefaultPackageURLProvider([&] { return configured; });
    EXPECT_FALSE(QLJournalPackageFile::defaultPackage());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith(start)) << log.lines()[0].toStdString();
  }
  configured = QUrl::fromLocalFile(home.path(u"New.quillojournal"_s));
  EXPECT_FALSE(QLJournalEntryFile::emptyJournalEntry());
  EXPECT_FALSE(QFile::exists(configured->toLocalFile()));

  configured = package->url();
  LogCapture log;
  ASSERT_TRUE(QLJournalPackageFile::defaultPackage());
  EXPECT_EQ(QLJournalPackageFile::defaultPackage()->identifier(), package->identifier());
  EXPECT_TRUE(QLJournalEntryFile::emptyJournalEntry());
  EXPECT_TRUE(log.lines().isEmpty());
}

}  // namespace quillo
