// The delegate's launch, its menu and what it hears from the other application, on fakes of the desktop's services.

#include "AppDelegateFixture.h"
#include "entry/AgentEntryWindow.h"
#include "entry/text/EntryViewTextView.h"
#include "foundation/Bookmark.h"
#include "foundation/FileContents.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QApplication>
#include <QDir>
#include <QTest>

namespace quillo {
namespace {

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
  delegate->observeValueForKeyPath(u"remindersAreEnabled"_s, reminders(), &another);
  EXPECT_FALSE(delegate->reminderAlarm().isStarted());
}

TEST_F(AppDelegateTest, SettingsThatWereUnreadableAtTheStartAreReadAtTheNextNotice) {
  for (const auto notice : {Notice::reminderSettingsDidChange, Notice::remindersManagerValuesDidChange}) {
    const QString path = list().propertyListURL().toLocalFile();
    list().setBoolForKey(true, Key::remindersEnabled);
    const QByteArray settings = *contentsOfFile(path);
    delegate.reset();
    forgetSettings();
    ASSERT_TRUE(writeFileInPlace(path, "torn {"));
    makeDelegate(&outlets);
    delegate->showMainApplicationWindow();
    EXPECT_FALSE(delegate->reminderAlarm().isStarted());
    distributedCenter.postNotification(notice);
    EXPECT_FALSE(delegate->reminderAlarm().isStarted());

    ASSERT_TRUE(writeFileInPlace(path, settings));
    distributedCenter.postNotification(notice);
    EXPECT_EQ(delegate->reminderAlarm().nextAlarmDate(), Date::since1970(1395349200)) << notice.data();
    EXPECT_EQ(openedMenu()[3], u"Disable Reminders"_s);

    // The tool tip goes on to follow the settings.
    for (int i = 0; i < 2; ++i) {
      QCoreApplication::processEvents();
      desktop.toolTips = 0;
      distributedCenter.postNotification(Notice::reminderSettingsDidChange);
      QCoreApplication::processEvents();
      EXPECT_EQ(desktop.toolTips, 1) << notice.data();
    }
  }
}

TEST_F(AppDelegateTest, TheMenuTellsOfTheReminders) {
  delegate->showMainApplicationWindow();
  const QStringList on = openedMenu();
  ASSERT_EQ(on.size(), 10);
  EXPECT_EQ(on[0], u"Show Quillo Application"_s);
  EXPECT_TRUE(on[2].startsWith(u"(Next Reminder: "_s)) << on[2].toStdString();
  EXPECT_EQ(on[7], u"About Quillo"_s);
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

TEST_F(AppDelegateTest, AboutOpensOneWindow) {
  const auto visibleWindows = [] {
    QWidgetList windows = QApplication::topLevelWidgets();
    windows.removeIf([](const QWidget* window) { return !window->isVisible(); });
    return windows;
  };
  EXPECT_TRUE(visibleWindows().isEmpty());
  delegate->contextualMenuItemClicked(6);
  const QWidgetList windows = visibleWindows();
  ASSERT_EQ(windows.size(), 1);
  windows[0]->close();
  EXPECT_TRUE(visibleWindows().isEmpty());
  delegate->contextualMenuItemClicked(6);
  EXPECT_EQ(visibleWindows(), windows);
}

TEST_F(AppDelegateTest, TextUnderAnAlertReachesTheWindowOfTheNextJournal) {
  QLJournalPackageFile::setDefaultPackageURLProvider([this] { return config().configuredJournalFileURL(); });
  const auto moveTo = [this](const QString& name) {
    list().setURLForKey(QUrl::fromLocalFile(home.path(name)), Key::journalPackageURL);
    distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  };
  const auto textView = []() -> EntryViewTextView* {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible() && qobject_cast<AgentEntryWindow*>(window))
        return window->findChild<EntryViewTextView*>();
    return nullptr;
  };
  for (const auto& name : {u"A"_s, u"B"_s})
    ASSERT_TRUE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(name)), /*create=*/true, nullptr));
  delegate->showMainApplicationWindow();
  moveTo(u"A"_s);
  delegate->hitHotKey(nullptr);
  ASSERT_TRUE(textView());
  QTest::keyClicks(textView(), u"half a thought"_s);
  ASSERT_TRUE(QDir(home.path(u"A"_s)).removeRecursively());
  delegate->hitHotKey(nullptr);
  ASSERT_TRUE(QApplication::activeModalWidget());
  // It goes with its window. Where the next cannot be reached either, nobody is asked about it.
  for (const auto& name : {u"gone"_s, u"B"_s}) {
    moveTo(name);
    EXPECT_FALSE(QApplication::activeModalWidget() || textView());
  }
  delegate->hitHotKey(nullptr);
  ASSERT_TRUE(textView());
  EXPECT_EQ(textView()->string(), u"half a thought"_s);
  QLJournalPackageFile::setDefaultPackageURLProvider({});
}

TEST_F(AppDelegateTest, RenewsItsOwnBookmarkFromTheSharedOne) {
  QDir().mkpath(home.path(u"there"_s));
  list().setURLForKey(QUrl::fromLocalFile(home.path(u"gone"_s)), Key::journalPackageURL);
  LogCapture log;
  delegate->resolveJournalFileAccess();
  EXPECT_TRUE(log.takeLines().isEmpty());

  list().setObjectForKey(QByteArray("no bookmark"), Key::journalFileSharedBookmarkData);
  delegate->resolveJournalFileAccess();
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(log.takeLines()[0].startsWith(u"Unable to resolve shared bookmark - "_s));

  ownDefaults.setObjectForKey(PropertyListValue(QByteArray("old")), Key::journalFileBookmarkData);
  const auto bookmark = Bookmark::bookmarkData(QUrl::fromLocalFile(home.path(u"there"_s)), Bookmark::plain);
  list().setObjectForKey(bookmark.value_or(QByteArray()), Key::journalFileSharedBookmarkData);
  delegate->resolveJournalFileAccess();
  // Of the configured location, which is gone: the old bookmark goes, too.
  EXPECT_EQ(ownDefaults.objectForKey(Key::journalFileBookmarkData), std::nullopt);
}

}  // namespace
}  // namespace quillo
