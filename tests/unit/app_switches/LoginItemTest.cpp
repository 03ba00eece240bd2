#include "ManagerFixture.h"
#include "app/switches/LoginItem.h"
#include "app/switches/URLAdditions.h"

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class LoginItemTest : public ManagerTest {
 protected:
  LoginItem item{u"com.x%2.y"_s, services};
};

TEST_F(LoginItemTest, FailuresAreLoggedAndStopARestart) {
  LogCapture log;
  items.disablingWorks = false;
  EXPECT_FALSE(item.restartLoginItem());
  EXPECT_EQ(take(), QStringList{u"disable com.x%2.y"_s});
  EXPECT_EQ(log.takeLines(), QStringList{u"Failed to set login item state 0 for com.x%2.y"_s});

  items.disablingWorks = true;
  items.enablingWorks = false;
  EXPECT_FALSE(item.restartLoginItem());
  EXPECT_EQ(take(), (QStringList{u"disable com.x%2.y"_s, u"enable com.x%2.y"_s}));
  EXPECT_EQ(log.takeLines(), QStringList{u"Failed to set login item state 1 for com.x%2.y"_s});

  items.enablingWorks = true;
  EXPECT_TRUE(item.restartLoginItem());
  EXPECT_EQ(log.takeLines(), QStringList{});

  LoginItem unserved(u"com.x.y"_s, {});
  EXPECT_FALSE(unserved.enableAsLoginItem() || unserved.existsAsLoginItem() || unserved.isRunning());
  EXPECT_EQ(log.takeLines(), QStringList{u"Failed to set login item state 1 for com.x.y"_s});
}

TEST_F(LoginItemTest, TheFirstJobOfTheLabelDecides) {
  const QString own = item.bundleID();
  const struct {
    QList<LoginJob> jobs;
    bool exists;
  } rows[] = {
      {{}, false},
      {{{u"com.x%2.Y"_s, true}, {u"com.x%2"_s, true}}, false},
      {{{u"other"_s, false}, {own, true}}, true},
      {{{own, false}, {own, true}}, false},
      {{{own, true}, {own, false}}, true},
  };
  for (const auto& row : rows) {
    items.jobs = row.jobs;
    EXPECT_EQ(item.existsAsLoginItem(), row.exists) << &row - rows;
  }
}

TEST_F(LoginItemTest, TheSessionListHasAnURLOnceNewOnesAtTheFront) {
  using namespace URLAdditions;
  const QUrl x(u"file:///x.app"_s);
  const QUrl y(u"file:///y.app"_s);
  for (const QUrl& url : {x, y, x}) setAppURLWillStartAtLogin(url, true, services);
  EXPECT_EQ(items.session, (QList<QUrl>{y, x}));
  EXPECT_TRUE(appURLWillStartAtLogin(x, services));
  for (int i = 0; i < 2; ++i) setAppURLWillStartAtLogin(x, false, services);
  EXPECT_EQ(items.session, QList<QUrl>{y});
  EXPECT_FALSE(appURLWillStartAtLogin(x, services));

  items.session.reset();
  setAppURLWillStartAtLogin(x, true, services);
  EXPECT_FALSE(appURLWillStartAtLogin(x, services) || appURLWillStartAtLogin(x, {}));
}

TEST(URLAdditions, ContainingBundle) {
  const struct {
    QString path, bundle;
  } rows[] = {
      {u"/a/X.app/Contents/Library/LoginItems/Y.app/Contents/MacOS/Y"_s,
       u"/a/X.app/Contents/Library/LoginItems/Y.app"_s},
      {u"/a/X.app/Contents/Library/Y.app"_s, u"/a/X.app"_s},
      {u"/a/b c.app/%41"_s, u"/a/b c.app"_s},
      {u"/a/X.app/Contents/../bin/./x"_s, u"/a/X.app"_s},
      {u"/a/X.app/../y"_s, {}},
      {u"/a/X.APP/b/.app/c"_s, {}},
      {u"/X.app"_s, {}},
      {u"/X.app/"_s, {}},
      {u"/"_s, {}},
      {u"relative"_s, {}},
      {{}, {}},
  };
  for (const auto& row : rows) {
    const auto found = URLAdditions::containingBundleURL(QUrl::fromLocalFile(row.path));
    EXPECT_EQ(found.value_or(QUrl()), QUrl::fromLocalFile(row.bundle)) << row.path.toStdString();
  }
  // As deep as a path can be asked for.
  EXPECT_EQ(URLAdditions::containingBundleURL(QUrl::fromLocalFile(u"/x"_s.repeated(4000))), std::nullopt);
}

TEST(URLAdditions, Subpath) {
  const struct {
    QString path, other;
    bool is;
  } rows[] = {
      {u"/a/b"_s, u"/a"_s, true},        {u"/a/b"_s, u"/a/b"_s, true},  {u"/a/b"_s, u"/a/bc"_s, false},
      {u"/a/bc"_s, u"/a/b"_s, false},    {u"/a"_s, u"/a/b"_s, false},   {u"/A/b"_s, u"/a"_s, false},
      {u"/a/b/"_s, u"/a/b"_s, true},     {u"/a/b"_s, u"/a/b/"_s, true}, {u"/a/./c/../b"_s, u"/a/b"_s, true},
      {u"/a/b/../.."_s, u"/a"_s, false}, {u"/a"_s, u"/"_s, true},       {u"a/b"_s, u"/"_s, false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(URLAdditions::isSubpathOfURL(QUrl::fromLocalFile(row.path), QUrl::fromLocalFile(row.other)), row.is)
        << row.path.toStdString() << " in " << row.other.toStdString();
  EXPECT_FALSE(URLAdditions::isSubpathOfURL(QUrl(u"file:///a/b"_s), std::nullopt));
}

}  // namespace
}  // namespace quillo
