// The delegate's launch, its menu and what it hears from the other application, on fakes of the desktop's services.

#include "PTHotKey/PTHotKeyCenter.h"
#include "app/AgentManager.h"
#include "app/LoginItem.h"
#include "app/QuilloAgentAppDelegate.h"
#include "app/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/AgentEntryWindow.h"
#include "foundation/Bookmark.h"
#include "foundation/DistributedNotificationCenter.h"
#include "platform/Clock.h"
#include "platform/OneShotTimer.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/TestHome.h"

#include <QAction>
#include <QDir>
#include <QMenu>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

struct FakeDesktop : RunningApplications, Workspace, Clock, OneShotTimerFactory {
  bool registerSelf(const QString&, std::function<void()>) override { return true; }
  QList<RunningApplication> running(const QString& identifier) const override {
    QList<RunningApplication> found;
    for (const auto& application : applications)
      if (application.bundleIdentifier == identifier) found << application;
    return found;
  }
  bool terminate(const RunningApplication& application) override {
    terminated << application.processIdentifier;
    return true;
  }
  qint64 currentProcessIdentifier() const override { return 2; }
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return true;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  double secondsSince1970() const override { return 1395311400; }  // 2014-03-20T10:30:00Z
  std::unique_ptr<OneShotTimer> schedule(double, std::function<void()> action) override {
    fire = std::move(action);
    return std::make_unique<OneShotTimer>();
  }

  QList<RunningApplication> applications;
  QList<qint64> terminated;
  QStringList opened;
  std::function<void()> fire;
  int statusItems{0};
  bool ended{false};
};

struct SilentStatusItem : StatusItem {
  void setImage(const QString&, bool) override {}
  void setHighlighted(bool) override {}
  void setToolTip(const QString& text) override { toolTip() = text; }
  // Of the last item that was made.
  static QString& toolTip() {
    static QString text;
    return text;
  }
  void setMenu(QMenu*) override {}
  void setLength(double) override {}
  std::optional<QRectF> geometry() const override { return QRectF(700, 2, 22, 22); }
  QRectF anchor() const override { return {700, 2, 22, 22}; }
  void onPrimaryClick(std::function<void()>) override {}
  void onGeometryChanged(std::function<void()>) override {}
};

class AppDelegateTest : public testing::Test {
 protected:
  AppDelegateTest() {
    RemindersManager::resetSharedManager();
    AgentManager::resetSharedManager();
    QuilloConfig::resetSharedConfig();
    UserDefaults::resetStandardUserDefaults();
    LoginItem::setSharedServices({nullptr, nullptr});
    PTHotKeyCenter::sharedCenter().setPlatform(&hotKeys);
    list().setObjectForKey(16, Key::remindersFrequency);
    list().setObjectForKey(1, Key::remindersInterval);
    list().setObjectForKey(Date::since1970(1394485200), Key::remindersBaseDate);  // 2014-03-10T21:00:00Z
    list().setObjectForKey(u"UTC"_s, Key::remindersBaseDateTimezone);
    delegate = std::make_unique<QuilloAgentAppDelegate>(
        config(), AgentPlatform{desktop, desktop,
                                [this] {
                                  ++desktop.statusItems;
                                  return std::make_unique<SilentStatusItem>();
                                },
                                [] { return true; }, desktop, desktop, [this] { desktop.ended = true; }});
  }
  ~AppDelegateTest() override {
    delegate.reset();
    PTHotKeyCenter::sharedCenter().setPlatform(nullptr);
    RemindersManager::resetSharedManager();
    AgentManager::resetSharedManager();
    QuilloConfig::resetSharedConfig();
    UserDefaults::resetStandardUserDefaults();
  }
  static QuilloConfig& config() { return QuilloConfig::sharedConfig(); }
  static PersistentPropertyList& list() { return *config().groupProperties(); }
  QStringList openedMenu() {
    Q_EMIT delegate->contextualMenu().aboutToShow();
    QStringList titles;
    for (const QAction* item : delegate->contextualMenu().actions())
      titles << (item->isSeparator() ? u"-"_s : (item->isEnabled() ? item->text() : u'(' + item->text() + u')'));
    return titles;
  }
  // As when the other application has written the setting.
  static void switchReminders(bool on) {
    list().setBoolForKey(on, Key::remindersEnabled);
    DistributedNotificationCenter::sharedCenter().postNotification(Notice::remindersManagerValuesDidChange);
  }

  // As the other application writes it.
  static void setShortcut(const PropertyListValue& value) {
    list().setObjectForKey(value, Key::menuEntryGlobalShortcut);
    DistributedNotificationCenter::sharedCenter().postNotification(Notice::menuBarEntryShortcutDidChange);
  }

  TestHome home;
  FakeDesktop desktop;
  FakeHotKeys hotKeys;
  std::unique_ptr<QuilloAgentAppDelegate> delegate;
};

TEST_F(AppDelegateTest, StartsOnceAndArmsTheAlarm) {
  EXPECT_FALSE(delegate->reminderAlarm().isStarted());
  delegate->showMainApplicationWindow();
  const auto* const window = delegate->entryWindowController();
  delegate->showMainApplicationWindow();
  EXPECT_EQ(desktop.statusItems, 1);
  EXPECT_EQ(delegate->entryWindowController(), window);
  EXPECT_EQ(delegate->reminderAlarm().nextAlarmDate(), Date::since1970(1395349200));  // 2014-03-20T21:00:00Z
}

TEST_F(AppDelegateTest, TheSwitchOfRemindersStopsAndStartsTheAlarm) {
  list().setBoolForKey(false, Key::remindersEnabled);
  delegate->showMainApplicationWindow();
  EXPECT_FALSE(delegate->reminderAlarm().isStarted());
  switchReminders(true);
  EXPECT_TRUE(delegate->reminderAlarm().isStarted());
  switchReminders(false);
  EXPECT_FALSE(delegate->reminderAlarm().isStarted());
  const int another = 0;
  list().setBoolForKey(true, Key::remindersEnabled);
  delegate->observeValueForKeyPath(u"remindersAreEnabled"_s, RemindersManager::sharedManager(), &another);
  EXPECT_FALSE(delegate->reminderAlarm().isStarted());
}

TEST_F(AppDelegateTest, AReminderOpensTheWindowOnlyWhereThatIsWanted) {
  delegate->showMainApplicationWindow();
  delegate->reminderAlarmFired();
  EXPECT_FALSE(delegate->statusController()->isShowingEntryWindow());
  list().setBoolForKey(true, Key::remindersOpenMenuBar);
  delegate->reminderAlarmFired();
  EXPECT_TRUE(delegate->statusController()->isShowingEntryWindow());
  EXPECT_EQ(delegate->statusController()->currentMode(), EntryWindowModeReminder);
}

TEST_F(AppDelegateTest, TheMenuTellsOfTheReminders) {
  delegate->showMainApplicationWindow();
  const QStringList on = openedMenu();
  ASSERT_EQ(on.size(), 10);
  EXPECT_EQ(on[0], u"Show Quillo Application"_s);
  EXPECT_TRUE(on[2].startsWith(u"(Next Reminder: "_s)) << on[2].toStdString();
  EXPECT_EQ(on[3], u"Disable Reminders"_s);
  switchReminders(false);
  const QStringList off = openedMenu();
  EXPECT_EQ(off[2], u"(Reminders: Off)"_s);
  EXPECT_EQ(off[3], u"Enable Reminders"_s);
  // On, with no date to be had.
  list().setObjectForKey(0, Key::remindersInterval);
  switchReminders(true);
  EXPECT_EQ(openedMenu()[2], u"(Next Reminder: (null))"_s);
}

TEST_F(AppDelegateTest, TheHotKeyTogglesAndFollowsTheSetting) {
  list().setObjectForKey(PropertyListDictionary{{u"keyCode"_s, 38}, {u"modifierFlags"_s, 768}},
                         Key::menuEntryGlobalShortcut);
  delegate->showMainApplicationWindow();
  const auto* status = delegate->statusController();
  hotKeys.press(38, 768);
  EXPECT_TRUE(status->isShowingEntryWindow());
  EXPECT_EQ(status->currentMode(), EntryWindowModeStandard);
  hotKeys.press(38, 768);
  EXPECT_FALSE(status->isShowingEntryWindow());

  const struct {
    PropertyListValue setting;
    std::optional<FakeHotKeys::Claim> claim;  // but for the number
    bool hasHotKey;
  } cases[] = {
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifierFlags"_s, u"256"_s}}, {{40, 256, {}}}, true},
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifierFlags"_s, -1}}, {{40, 0xFFFFFFFF, {}}}, true},
      {PropertyListDictionary{{u"modifierFlags"_s, 256}}, {{0, 256, {}}}, true},
      // The other form of a combination names its modifiers differently.
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifiers"_s, 256}}, {}, true},
      {PropertyListDictionary{{u"keyCode"_s, -1}, {u"modifierFlags"_s, 256}}, {}, true},
      {u"no dictionary"_s, {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.setting.description().toStdString());
    setShortcut(c.setting);
    ASSERT_EQ(hotKeys.claims.size(), c.claim ? 1U : 0U);
    EXPECT_EQ(delegate->globalHotKey() != nullptr, c.hasHotKey);
    if (!c.claim) continue;
    EXPECT_EQ(hotKeys.claims.begin()->second.keyCode, c.claim->keyCode);
    EXPECT_EQ(hotKeys.claims.begin()->second.modifiers, c.claim->modifiers);
    EXPECT_EQ(delegate->globalHotKey()->identifier(), PropertyListValue(u"SRTest"_s));
  }
}

TEST_F(AppDelegateTest, AShortcutThatIsRefusedIsSaidAndKept) {
  const PropertyListDictionary shortcut{{u"keyCode"_s, 36}, {u"modifierFlags"_s, 768}};
  delegate->showMainApplicationWindow();
  LogCapture log;
  hotKeys.refusal = HotKeyStatus::alreadyClaimed;
  setShortcut(shortcut);
  const QString problem = u"The shortcut ⌘⇧↩ is not available: another program has claimed it"_s;
  EXPECT_EQ(log.takeLines(), QStringList{problem});
  EXPECT_EQ(SilentStatusItem::toolTip(), u"Quillo\n"_s + problem);
  EXPECT_NE(delegate->globalHotKey(), nullptr);

  // Accepted at first, and refused when the user was asked.
  hotKeys.refusal = HotKeyStatus::done;
  setShortcut(PropertyListDictionary{{u"keyCode"_s, 36}, {u"modifierFlags"_s, 256}});
  EXPECT_EQ(SilentStatusItem::toolTip(), u"Quillo"_s);
  hotKeys.stateObserver(hotKeys.lastRef, HotKeyState::Refused, u"it was declined"_s);
  EXPECT_EQ(log.takeLines(), QStringList{u"The shortcut ⌘↩ is not available: it was declined"_s});
  EXPECT_TRUE(SilentStatusItem::toolTip().endsWith(u"declined"_s));
  hotKeys.stateObserver(hotKeys.lastRef, HotKeyState::Active, {});
  EXPECT_EQ(SilentStatusItem::toolTip(), u"Quillo"_s);
}

TEST_F(AppDelegateTest, CommandsReachTheOtherApplication) {
  desktop.applications = {{Identifier::mainApplication, 7}, {Identifier::agent, 2}, {Identifier::agent, 3}};
  delegate->applicationWillFinishLaunching();
  EXPECT_EQ(desktop.terminated, QList<qint64>{3});
  desktop.terminated.clear();
  for (const int tag : {1, 2, 3, 5, 99}) delegate->contextualMenuItemClicked(tag);
  EXPECT_EQ(desktop.opened, (QStringList{u"quillo://open"_s, u"quillo://preferences"_s}));
  EXPECT_FALSE(desktop.ended);
  delegate->contextualMenuItemClicked(7);
  EXPECT_EQ(desktop.terminated, QList<qint64>{7});
  EXPECT_TRUE(desktop.ended);
}

TEST_F(AppDelegateTest, RenewsItsOwnBookmarkFromTheSharedOne) {
  UserDefaults& defaults = UserDefaults::standardUserDefaults();
  QDir().mkpath(home.path(u"there"_s));
  list().setURLForKey(QUrl::fromLocalFile(home.path(u"gone"_s)), Key::journalPackageURL);
  LogCapture log;
  delegate->resolveJournalFileAccess();
  EXPECT_TRUE(log.takeLines().isEmpty());

  list().setObjectForKey(QByteArray("no bookmark"), Key::journalFileSharedBookmarkData);
  delegate->resolveJournalFileAccess();
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(log.takeLines()[0].startsWith(u"Unable to resolve shared bookmark - "_s));

  defaults.setObjectForKey(PropertyListValue(QByteArray("old")), Key::journalFileBookmarkData);
  list().setObjectForKey(*Bookmark::bookmarkData(QUrl::fromLocalFile(home.path(u"there"_s)), Bookmark::plain),
                         Key::journalFileSharedBookmarkData);
  delegate->resolveJournalFileAccess();
  // Of the configured location, which is gone: the old bookmark goes, too.
  EXPECT_EQ(defaults.objectForKey(Key::journalFileBookmarkData), std::nullopt);
}

}  // namespace
}  // namespace quillo
