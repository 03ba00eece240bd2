#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "config/URLAccess.h"
#include "foundation/Bookmark.h"
#include "foundation/FileContents.h"
#include "foundation/TildeExpansion.h"
#include "platform/Workspace.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <set>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class QuilloConfigTest : public testing::Test {
 protected:
  QuilloConfig& config() {
    if (!m_config)
      m_config = std::make_unique<QuilloConfig>(UserDirectories::current(), defaults, [this](const char* name) {
        return environment.value(QLatin1StringView(name));
      });
    return *m_config;
  }
  PersistentPropertyList& list() { return *config().groupProperties(); }
  QString folder(const QString& name) {
    EXPECT_TRUE(QDir().mkpath(home.path(name)));
    return home.path(name);
  }

  TestHome home;
  UserDefaults defaults{home.path(u"config"_s), Identifier::agent};
  QMap<QString, QString> environment;

 private:
  std::unique_ptr<QuilloConfig> m_config;
};

TEST_F(QuilloConfigTest, AnUnreadableSharedListReadsAsAbsentUntilItIsGood) {
  const QString path = config().groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
  ASSERT_TRUE(writeFileInPlace(path, "garbage {"));
  LogCapture log;
  EXPECT_EQ(config().groupProperties(), nullptr);
  EXPECT_EQ(log.takeLines(),
            QStringList{u"-[QuilloConfig groupProperties] Unable to initialize group property list - (null)"_s});
  EXPECT_TRUE(config().sendUsageData());
  EXPECT_FALSE(config().verboseLogging());
  EXPECT_EQ(config().configuredJournalFileURL(), std::nullopt);
  config().setVerboseLogging(true);
  QFile::remove(path);
  EXPECT_FALSE(config().verboseLogging());
  config().setVerboseLogging(true);
  EXPECT_TRUE(config().verboseLogging());
}

// A limit on file sizes stands in for the full disk: files are made, and nothing goes into them.
TEST_F(QuilloConfigTest, AFullDiskLeavesNoListThatNobodyCouldRead) {
  const QString path = config().groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit full = before;
  full.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  PersistentPropertyList* const empty = config().groupProperties();
  if (empty) empty->setBoolForKey(true, u"K"_s);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handlerBefore);
  ASSERT_TRUE(empty && empty->lastError());
  EXPECT_TRUE(list().lastError()->localizedDescription.startsWith(path + u": "_s));
  EXPECT_FALSE(QFileInfo::exists(path));
  EXPECT_TRUE(list().synchronize());
  EXPECT_TRUE(QFileInfo::exists(path));
}

TEST_F(QuilloConfigTest, AListOfNoBytesIsMadeAnew) {
  const QString path = config().groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
  ASSERT_TRUE(writeFileInPlace(path, ""));
  LogCapture log;
  ASSERT_TRUE(config().groupProperties());
  EXPECT_EQ(log.lines(), QStringList{u"The group property list was an empty file and is made anew - "_s + path});
  EXPECT_TRUE(contentsOfFile(path)->startsWith("<?xml"));
}

TEST_F(QuilloConfigTest, EnsuresItsDirectories) {
  const QString group = home.path(u"Library/Group Containers/Q7R2KX9M4P.quilloapp"_s);
  const struct {
    QUrl url;
    QString path;
    bool exists;
  } cases[] = {
      {config().groupContainerURL(), group, true},
      {config().groupLogsDirectoryURL(), group + u"/Data/Logs"_s, true},
      {config().groupPrefsDirectoryURL(), group + u"/Data/Preferences"_s, true},
      {config().defaultBackupDirectoryURL(), home.path(u".local/share/quillo/Backup"_s), false},
      {config().dataDirectoryURL(), home.path(u"Documents"_s), true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.url.toLocalFile(), c.path);
    EXPECT_EQ(QFileInfo(c.path).isDir(), c.exists) << c.path.toStdString();
  }
}

TEST_F(QuilloConfigTest, ADirectoryThatCannotBeMadeIsLoggedAndAnsweredAllTheSame) {
  QFile(home.path(u"Documents"_s)).open(QIODevice::WriteOnly);
  LogCapture log;
  EXPECT_EQ(config().dataDirectoryURL().toLocalFile(), home.path(u"Documents"_s));
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(log.lines()[0].startsWith(u"Failed to create directory at "_s + home.path(u"Documents"_s) + u" - "_s));
}

TEST_F(QuilloConfigTest, ScalarSettings) {
  EXPECT_EQ(config().serverURL(), QUrl(productionWebBaseURL));
  config().setServerURL(QUrl(u"https://test.example/a%20b"_s));
  EXPECT_EQ(list().valueForKey(Key::serverURL), PropertyListValue(u"https://test.example/a%20b"_s));
  EXPECT_EQ(config().serverURL(), QUrl(u"https://test.example/a%20b"_s));

  const struct {
    PropertyListValue stored;
    bool sends;
  } usage[] = {{0, false}, {false, false}, {0.0, false}, {1, true}, {true, true}, {u"NO"_s, true}, {Date(0), true}};
  EXPECT_TRUE(config().sendUsageData());
  for (const auto& c : usage) {
    list().setObjectForKey(c.stored, Key::sendUsageData);
    EXPECT_EQ(config().sendUsageData(), c.sends) << c.stored.description().toStdString();
  }

  EXPECT_EQ(config().nativeSyncJournalID(), std::nullopt);
  config().setNativeSyncJournalID(PropertyListValue(PropertyListArray{1, u"x"_s}));
  EXPECT_EQ(config().nativeSyncJournalID(), PropertyListValue(PropertyListArray{1, u"x"_s}));
}

TEST_F(QuilloConfigTest, TheWebInspectorSwitchFollowsTheEnvironment) {
  const struct {
    QString variable;
    bool allowed;
  } cases[] = {{u"1"_s, true}, {u"YES"_s, true}, {u"0"_s, false}, {u""_s, false}};
  for (const auto& c : cases) {
    const QuilloConfig config(UserDirectories::current(), defaults, [&](const char*) { return c.variable; });
    EXPECT_EQ(config.shouldAllowWebInspector(), c.allowed);
    EXPECT_EQ(defaults.objectForKey(Key::webKitDeveloperExtras),
              c.allowed ? std::optional(PropertyListValue(u"1"_s)) : std::nullopt);
  }
}

TEST_F(QuilloConfigTest, MigratesTheOldBackupLocation) {
  EXPECT_EQ(config().backupRootURL(), config().defaultBackupDirectoryURL());
  const QString existing = folder(u"old backup"_s);
  defaults.setObjectForKey(PropertyListValue(existing), Key::autoBackupLocation);
  EXPECT_EQ(config().backupRootURL().toLocalFile(), existing);
  EXPECT_TRUE(defaults.dataForKey(Key::autoBackupLocationBookmark));
  EXPECT_TRUE(defaults.objectForKey(Key::autoBackupLocation));

  QDir().rmdir(existing);
  EXPECT_EQ(config().backupRootURL(), config().defaultBackupDirectoryURL());

  // A file in the folder's place reads as "exists" and is bookmarked; a folder below a file cannot be made.
  QFile(home.path(u"file"_s)).open(QIODevice::WriteOnly);
  defaults.removeObjectForKey(Key::autoBackupLocationBookmark);
  defaults.setObjectForKey(PropertyListValue(home.path(u"file/below"_s)), Key::autoBackupLocation);
  LogCapture log;
  EXPECT_EQ(config().backupRootURL(), config().defaultBackupDirectoryURL());
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(log.lines()[0].startsWith(u"Error creating backup directory: "_s)) << log.lines()[0].toStdString();
}

TEST_F(QuilloConfigTest, SettingTheJournalStoresThePathAndBothBookmarks) {
  const QString journal = folder(u"J.quillojournal"_s);
  config().setConfiguredJournalFileURL(QUrl::fromLocalFile(journal));
  EXPECT_EQ(list().valueForKey(Key::journalPackageURL), PropertyListValue(journal));
  EXPECT_EQ(config().configuredJournalFileURL(), QUrl::fromLocalFile(journal));
  EXPECT_EQ(config().resolveJournalFileBookmarkData(), QUrl::fromLocalFile(journal));
  EXPECT_EQ(Bookmark::resolve(list().valueForKey(Key::journalFileSharedBookmarkData)->data(), 0)->url,
            QUrl::fromLocalFile(journal));

  LogCapture log;
  config().setConfiguredJournalFileURL(std::nullopt);
  for (const auto key : {Key::journalPackageURL, Key::journalFileSharedBookmarkData})
    EXPECT_EQ(list().valueForKey(key), std::nullopt);
  EXPECT_EQ(defaults.objectForKey(Key::journalFileBookmarkData), std::nullopt);
  ASSERT_EQ(log.lines().size(), 2);
  EXPECT_TRUE(log.lines()[0].startsWith(u"Journal file bookmark create error - "_s));
  EXPECT_TRUE(log.lines()[1].startsWith(u"Journal file shared bookmark create error - "_s));
}

TEST_F(QuilloConfigTest, ResolvesOnlyAFreshBookmark) {
  const QString journal = folder(u"J.quillojournal"_s);
  {
    LogCapture log;
    config().startAccessingSecurityScopedResources();
    EXPECT_EQ(log.lines(), QStringList());
  }
  config().setConfiguredJournalFileURL(QUrl::fromLocalFile(journal));
  // Another folder in the same place; the old one lives on, so that its inode is not given out again.
  QDir().rename(journal, home.path(u"moved"_s));
  folder(u"J.quillojournal"_s);
  LogCapture log;
  EXPECT_EQ(config().resolveJournalFileBookmarkData(), std::nullopt);
  EXPECT_EQ(log.takeLines(), QStringList{u"Journal file bookmark is stale"_s});
  QDir().rmdir(journal);
  EXPECT_EQ(config().resolveJournalFileBookmarkData(), std::nullopt);
  EXPECT_TRUE(log.takeLines().join(u' ').startsWith(u"Journal file bookmark read error - "_s));
  defaults.setObjectForKey(PropertyListValue(QByteArray("not a bookmark")), Key::journalFileBookmarkData);
  EXPECT_EQ(config().resolveJournalFileBookmarkData(), std::nullopt);
}

TEST_F(QuilloConfigTest, AccessAndTilde) {
  const QString journal = folder(u"J"_s);
  EXPECT_TRUE(URLAccess::isReadable(QUrl::fromLocalFile(journal)));
  EXPECT_TRUE(URLAccess::isWritable(QUrl::fromLocalFile(journal)));
  for (const QUrl& url : {QUrl(), QUrl(u"https://x.example"_s), QUrl::fromLocalFile(home.path(u"none"_s))})
    EXPECT_FALSE(URLAccess::isReadable(url) || URLAccess::isWritable(url)) << url.toString().toStdString();
  EXPECT_FALSE(URLAccess::isWritable(QUrl::fromLocalFile(u"/proc/version"_s)) && ::getuid() != 0);

  const QString real = userHomeDirectory();
  EXPECT_EQ(stringByExpandingTildeInPathToActualUserHomeDirectory(u"Library"_s), u"Library"_s);
  EXPECT_EQ(stringByExpandingTildeInPathToActualUserHomeDirectory(u"~/Library"_s), real + u"/Library"_s);
  EXPECT_EQ(stringByExpandingTildeInPathToActualUserHomeDirectory(u"~name/x"_s), real + u"name/x"_s);
}

TEST(Settings, EachStandsOnceInTheTableWithADefaultOfItsKind) {
  std::set<QString> names;
  for (const Setting& setting : settingsTable()) {
    EXPECT_TRUE(names.insert(setting.key).second) << setting.key.data();
    const auto value = setting.defaultValue();
    EXPECT_TRUE(setting.type != SettingType::Bool || !value || value->isBool()) << setting.key.data();
    EXPECT_TRUE(setting.type != SettingType::Integer || !value || value->isInteger()) << setting.key.data();
  }
  EXPECT_EQ(settingForKey(u"NoSuchKey"_s), nullptr);
}

}  // namespace
}  // namespace quillo
