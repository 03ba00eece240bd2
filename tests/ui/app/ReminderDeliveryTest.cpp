// What a reminder that has come does, and what a click on its notification, on fakes of the desktop's services.

#include "AppDelegateFixture.h"
#include "entry/AgentEntryWindow.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QPlainTextEdit>
#include <QTest>

namespace quillo {
namespace {

const QString sound = u"quillo-reminder"_s;

class ReminderDeliveryTest : public AppDelegateTest {
 protected:
  ReminderDeliveryTest() { delegate->showMainApplicationWindow(); }

  void wants(bool playSound, bool openMenuBar, bool notification) {
    list().setBoolForKey(playSound, Key::remindersPlaySound);
    list().setBoolForKey(openMenuBar, Key::remindersOpenMenuBar);
    list().setBoolForKey(notification, Key::remindersSendToNotificationCenter);
  }
  // What happened since the last time, in order.
  QStringList fire() {
    outlets.events.clear();
    delegate->reminderAlarmFired();
    return outlets.events;
  }
  bool windowIsOpen() const { return delegate->statusController()->isShowingEntryWindow(); }
};

TEST_F(ReminderDeliveryTest, FollowsTheThreeSettings) {
  const struct {
    bool playSound, openMenuBar, notification;
    QStringList events;
  } rows[] = {
      {false, false, false, {}},
      // No sound alone.
      {true, false, false, {}},
      {false, true, false, {}},
      {true, true, false, {u"play "_s + sound}},
      {false, false, true, {u"notify"_s}},
      {true, false, true, {u"notify with "_s + sound}},
      {false, true, true, {u"notify"_s}},
      // Once.
      {true, true, true, {u"play "_s + sound, u"notify"_s}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.playSound << row.openMenuBar << row.notification);
    delegate->statusController()->hideEntryWindow();
    outlets.standing.clear();
    wants(row.playSound, row.openMenuBar, row.notification);
    EXPECT_EQ(fire(), row.events);
    EXPECT_EQ(windowIsOpen(), row.openMenuBar);
    if (row.openMenuBar) {
      EXPECT_EQ(delegate->statusController()->currentMode(), EntryWindowModeReminder);
    }
    EXPECT_EQ(outlets.standing.size(), row.notification ? 1 : 0);
  }
}

TEST_F(ReminderDeliveryTest, AbsentSettingsAreOffAndTheAlarmGoesOn) {
  const auto due = delegate->reminderAlarm().nextAlarmDate();
  outlets.events.clear();
  desktop.fire();
  EXPECT_EQ(outlets.events, QStringList{});
  EXPECT_FALSE(windowIsOpen());
  EXPECT_EQ(delegate->reminderAlarm().nextAlarmDate(), due->addingTimeInterval(24 * 60 * 60));
}

TEST_F(ReminderDeliveryTest, TheNotificationCarriesAQuotationAndTheLatestStandsAlone) {
  wants(false, false, true);
  EXPECT_FALSE(outlets.centerDelegate);
  fire();
  fire();
  ASSERT_EQ(outlets.standing.size(), 1);
  EXPECT_EQ(outlets.standing[0].identifier, 2U);
  EXPECT_EQ(outlets.standing[0].title, u"Journal Reminder"_s);
  EXPECT_TRUE(outlets.standing[0].informativeText.startsWith(u'“'))
      << outlets.standing[0].informativeText.toStdString();
}

TEST_F(ReminderDeliveryTest, AWindowThatIsOpenKeepsItsMode) {
  wants(true, true, true);
  delegate->statusController()->showEntryWindowInMode(EntryWindowModeStandard);
  EXPECT_EQ(fire(), (QStringList{u"play "_s + sound, u"notify"_s}));
  EXPECT_EQ(delegate->statusController()->currentMode(), EntryWindowModeStandard);
}

TEST_F(ReminderDeliveryTest, AClickLeadsToANewEntryOrHandsTheOpenOneOver) {
  const QUrl journal = QUrl::fromLocalFile(home.path(u"J.quillojournal"_s));
  QLJournalPackageFile::setDefaultPackageURLProvider([journal] { return journal; });
  ASSERT_TRUE(QLJournalPackageFile::openPackage(journal, true, nullptr));
  config().setConfiguredJournalFileURL(journal);
  wants(false, false, true);
  fire();
  const UserNotification first = outlets.standing[0];
  outlets.centerDelegate->didActivateNotification(first);
  EXPECT_EQ(outlets.events.last(), u"remove 1"_s);
  EXPECT_EQ(desktop.opened, QStringList{u"quillo://post"_s});

  desktop.opened.clear();
  wants(false, true, true);
  fire();
  auto* text = delegate->entryWindowController()->window().findChild<QPlainTextEdit*>(u"textView"_s);
  ASSERT_TRUE(text);
  text->setPlainText(u"while it reminded"_s);
  outlets.centerDelegate->didActivateNotification(outlets.standing[0]);
  EXPECT_EQ(outlets.events.last(), u"remove 2"_s);
  EXPECT_FALSE(windowIsOpen());
  EXPECT_FALSE(desktop.opened.contains(u"quillo://post"_s));
  const QLJournalIndex index(QLJournalPackageFile::openPackage(journal, false, nullptr));
  ASSERT_EQ(index.entries().size(), 1);
  EXPECT_EQ(index.entries()[0]->string(), u"while it reminded"_s);
  QLJournalPackageFile::setDefaultPackageURLProvider({});
}

TEST_F(ReminderDeliveryTest, ANotificationStandsForAWindowThatWouldTakeTheKeyboard) {
  windowsTakeKeyboard = true;
  makeDelegate(&outlets);
  delegate->showMainApplicationWindow();
  wants(true, true, false);
  EXPECT_EQ(fire(), (QStringList{u"play "_s + sound, u"notify"_s}));
  EXPECT_FALSE(windowIsOpen());
  outlets.centerDelegate->didActivateNotification(outlets.standing[0]);
  EXPECT_TRUE(windowIsOpen());
  EXPECT_EQ(delegate->statusController()->currentMode(), EntryWindowModeReminder);
  EXPECT_EQ(desktop.opened, QStringList{});
  delegate->statusController()->hideEntryWindow();

  // Nothing shows notifications: the window is better than no reminder.
  fire();
  EXPECT_FALSE(windowIsOpen());
  outlets.centerDelegate->didFailToShowNotification(outlets.standing[0]);
  EXPECT_TRUE(windowIsOpen());
  delegate->statusController()->hideEntryWindow();

  // One that was asked for as such leads where it always does.
  wants(false, false, true);
  fire();
  outlets.centerDelegate->didActivateNotification(outlets.standing[0]);
  EXPECT_FALSE(windowIsOpen());
  EXPECT_EQ(desktop.opened, QStringList{u"quillo://post"_s});
}

TEST_F(ReminderDeliveryTest, WithoutCentreAndSoundTheWindowStillOpens) {
  makeDelegate(nullptr);
  delegate->showMainApplicationWindow();
  wants(true, true, true);
  EXPECT_EQ(fire(), QStringList{});
  EXPECT_TRUE(windowIsOpen());
}

}  // namespace
}  // namespace quillo
