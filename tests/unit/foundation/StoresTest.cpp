// What keeps and passes values: own defaults, bundles, files and notification centres.

#include "foundation/Bundle.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/FileContents.h"
#include "foundation/UserDefaults.h"
#include "platform/DistributedNotifications.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;

void put(const QString& path, const QByteArray& bytes) {
  ASSERT_TRUE(writeFileAtomically(path, bytes));
}

TEST(UserDefaultsTest, StoredValuesStandOverRegisteredOnesAndLast) {
  const TestHome home;
  {
    UserDefaults defaults(home.path(u"new/folder"_s), u"domain"_s);
    defaults.registerDefaults({{u"spell"_s, true}, {u"grammar"_s, false}});
    EXPECT_TRUE(defaults.boolForKey(u"spell"_s));
    defaults.setBoolForKey(false, u"spell"_s);
    defaults.setObjectForKey(PropertyListValue(u"~/B"_s), u"url"_s);
    EXPECT_FALSE(defaults.boolForKey(u"spell"_s));
  }
  UserDefaults again(home.path(u"new/folder"_s), u"domain"_s);
  EXPECT_EQ(again.objectForKey(u"spell"_s), PropertyListValue(false));
  EXPECT_EQ(again.objectForKey(u"grammar"_s), std::nullopt);
  EXPECT_EQ(again.URLForKey(u"url"_s), QUrl::fromLocalFile(home.path(u"B"_s)));
  again.registerDefaults({{u"spell"_s, true}});
  again.removeObjectForKey(u"spell"_s);
  EXPECT_TRUE(again.boolForKey(u"spell"_s));
  EXPECT_EQ(QFile::permissions(again.path()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST(UserDefaultsTest, ADamagedFileReadsAsEmptyAndIsKept) {
  const TestHome home;
  put(home.path(u"d.plist"_s), "<plist><dict><key>torn");
  LogCapture log;
  UserDefaults defaults(home.path(), u"d"_s);
  EXPECT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(defaults.persistentDomain().isEmpty());
  defaults.setBoolForKey(true, u"k"_s);
  EXPECT_EQ(*contentsOfFile(home.path(u"d.plist.damaged"_s)), QByteArray("<plist><dict><key>torn"));
  EXPECT_TRUE(UserDefaults(home.path(), u"d"_s).boolForKey(u"k"_s));
}

TEST(UserDefaultsTest, TwoProgramsChangeOneDomain) {
  const TestHome home;
  UserDefaults agent(home.path(u"c"_s), u"d"_s);
  agent.setBoolForKey(true, u"spell"_s);
  UserDefaults other(home.path(u"c"_s), u"d"_s);
  other.setBoolForKey(false, u"spell"_s);
  other.setBoolForKey(true, u"grammar"_s);
  EXPECT_TRUE(agent.boolForKey(u"spell"_s)) << "until it is told to look";
  agent.setObjectForKey(PropertyListValue(u"u"_s), u"url"_s);
  EXPECT_FALSE(agent.boolForKey(u"spell"_s));
  EXPECT_TRUE(agent.boolForKey(u"grammar"_s));
  EXPECT_TRUE(other.synchronize());
  EXPECT_FALSE(other.synchronize());
  EXPECT_EQ(other.objectForKey(u"url"_s), PropertyListValue(u"u"_s));
  other.removeObjectForKey(u"url"_s);
  EXPECT_TRUE(agent.synchronize());
  EXPECT_EQ(agent.objectForKey(u"url"_s), std::nullopt);
}

// A folder in place of the file: what was set stays in use, and is written once that can be.
TEST(UserDefaultsTest, WhatCouldNotBeSavedIsSavedWithTheNext) {
  const TestHome home;
  ASSERT_TRUE(QDir().mkpath(home.path(u"d.plist/x"_s)));
  LogCapture log;
  UserDefaults defaults(home.path(), u"d"_s);
  defaults.setBoolForKey(true, u"a"_s);
  EXPECT_TRUE(defaults.boolForKey(u"a"_s));
  ASSERT_TRUE(defaults.lastError());
  ASSERT_TRUE(QDir(home.path(u"d.plist"_s)).removeRecursively());
  defaults.setBoolForKey(true, u"b"_s);
  EXPECT_FALSE(defaults.lastError());
  EXPECT_TRUE(UserDefaults(home.path(), u"d"_s).boolForKey(u"a"_s));
}

TEST(BundleTest, FindsResourcesAndTexts) {
  const TestHome home;
  QDir().mkpath(home.path(u"de.lproj"_s));
  QDir().mkpath(home.path(u"QLCore.bundle"_s));
  put(home.path(u"a.txt"_s), "x");
  put(home.path(u"de.lproj/Localizable.strings"_s), "/* menu */ \"Bold\" = \"Fett\";");
  const Bundle bundle(home.path(), {{InfoKey::identifier, u"com.example.test"_s}});
  EXPECT_EQ(bundle.bundleIdentifier(), u"com.example.test"_s);
  EXPECT_EQ(bundle.pathForResource(u"a"_s, u"txt"_s), home.path(u"a.txt"_s));
  EXPECT_EQ(bundle.pathForResource(u"b"_s, u"txt"_s), std::nullopt);
  EXPECT_TRUE(bundle.bundleForResource(u"QLCore"_s));
  const struct {
    QString key, value;
    QStringList languages;
    QString expected;
  } texts[] = {{u"Bold"_s, {}, {u"de-AT"_s, u"en"_s}, u"Fett"_s},
               {u"Bold"_s, {}, {u"fr"_s}, u"Bold"_s},
               {u"Italic"_s, u"fallback"_s, {u"de"_s}, u"fallback"_s}};
  for (const auto& t : texts)
    EXPECT_EQ(bundle.localizedStringForKey(t.key, t.value, u"Localizable"_s, t.languages), t.expected);
}

TEST(FileContentsTest, RefusesWhatIsNoRegularFile) {
  const TestHome home;
  Error error;
  EXPECT_EQ(contentsOfFile(home.path(u"none"_s), &error), std::nullopt);
  EXPECT_EQ(error.code, ErrorCode::fileReadNoSuchFile);
  for (const QString& odd : {home.path(), u"/dev/zero"_s}) {
    EXPECT_EQ(contentsOfFile(odd, &error), std::nullopt) << odd.toStdString();
    EXPECT_NE(error.code, ErrorCode::fileReadNoSuchFile);
  }
  EXPECT_FALSE(writeFileInPlace(home.path(), "x", &error));
  EXPECT_FALSE(writeFileInPlace(u"/dev/full"_s, "x", &error));
  EXPECT_FALSE(writeFileAtomically(home.path(u"no/folder/x"_s), "x", &error));
}

TEST(FileContentsTest, WritesForTheUserAloneWhateverTheUmask) {
  const TestHome home;
  const QString path = home.path(u"file"_s);
  const mode_t before = ::umask(0);
  EXPECT_TRUE(writeFileInPlace(path, "in place"));
  EXPECT_EQ(modeOf(path), 0600);
  // Another program was more generous; its file is replaced, and a link to it stays one.
  ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0666), 0);
  ASSERT_TRUE(QFile::link(path, home.path(u"link"_s)));
  EXPECT_TRUE(writeFileAtomically(home.path(u"link"_s), "as a whole"));
  ::umask(before);
  EXPECT_EQ(modeOf(path), 0600);
  EXPECT_EQ(contentsOfFile(path), "as a whole");
  EXPECT_TRUE(QFileInfo(home.path(u"link"_s)).isSymLink());
}

TEST(NotificationCenterTest, DeliversByNameAndObjectToThoseStillObserving) {
  NotificationCenter center;
  std::vector<std::string> seen;
  const int object = 0;
  std::unique_ptr<Registration> first, second;
  first = center.observe(u"N"_s, [&](const Notification&) {
    seen.emplace_back("first");
    second.reset();
  });
  second = center.observe(u"N"_s, [&](const Notification&) { seen.emplace_back("second"); });
  auto ofObject = center.observe(
      u"N"_s, [&](const Notification&) { seen.emplace_back("of object"); }, &object);
  center.postNotification(u"M"_s);
  center.postNotification(u"N"_s);
  center.postNotification(u"N"_s, &object);
  first.reset();
  ofObject.reset();
  center.postNotification(u"N"_s, &object);
  EXPECT_THAT(seen, ElementsAre("first", "first", "of object"));
  auto shortLived = std::make_unique<NotificationCenter>();
  const auto longer = shortLived->observe(u"N"_s, [](const Notification&) {});
  shortLived.reset();
}

TEST(DistributedNotificationCenterTest, GoesThroughTheTransportOrStaysInTheProcess) {
  class Transport : public DistributedNotifications {
   public:
    void setReceiver(std::function<void(const QString&)> r) override { receiver = std::move(r); }
    bool post(const QString& name) override {
      if (works) receiver(name);
      return works;
    }
    std::function<void(const QString&)> receiver;
    bool works{true};
  } transport;
  DistributedNotificationCenter center;
  int heard = 0;
  const auto observation = center.observe(u"N"_s, [&](const Notification& n) { heard += n.object ? 100 : 1; });
  LogCapture log;
  center.setTransport(&transport);
  center.postNotification(u"N"_s, &heard);
  EXPECT_EQ(heard, 1);
  // For whoever has switched on that everything is logged.
  EXPECT_EQ(log.takeLines(), QStringList{u"Heard N"_s});
  transport.works = false;
  center.postNotification(u"N"_s);
  center.postNotification(u"N"_s);
  EXPECT_EQ(heard, 3);
  EXPECT_EQ(log.lines().size(), 1) << "that there is no bus is said once";
}

}  // namespace
}  // namespace quillo
