#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "platform/SystemEvents.h"
#include "reminders/ReminderAlarm.h"
#include "reminders/ReminderInterval.h"
#include "reminders/SystemNotices.h"
#include "tests/support/FakeTimers.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

Date at(const char* text) {
  return Date::fromISO8601(QLatin1StringView(text)).value_or(Date());
}

class FakeSystemEvents final : public SystemEvents {
 public:
  void setReceiver(std::function<void(SystemEvent)> receiver) override { m_receiver = std::move(receiver); }
  void send(SystemEvent event) { m_receiver(event); }

 private:
  std::function<void(SystemEvent)> m_receiver;
};

// A daily reminder at 21:00 in Berlin, which is 20:00Z; it is half past two in the afternoon of 20 March.
class ReminderAlarmTest : public testing::Test {
 protected:
  ReminderAlarmTest() {
    qputenv("TZ", "Europe/Berlin");
    list = PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(home.path(u"quillo.plist"_s)));
    interval.setCalendarUnit(CalendarUnit::Day);
    interval.setIntervalValue(1);
    interval.setBaseDate(at("2014-03-10T20:00:00Z"));
    interval.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
    interval.writeToUserDefaults(*list);
    timers.setTime(seconds("2014-03-20T13:30:00Z"));
    postSystemNotices(events, local, workspace);
    target = std::make_unique<QObject>();
    alarm = std::make_unique<ReminderAlarm>([this] { return listIsReadable ? list.get() : nullptr; }, target.get(),
                                            [this](ReminderAlarm& fired) {
                                              EXPECT_EQ(&fired, alarm.get());
                                              EXPECT_FALSE(fired.isSnoozing());
                                              ++actions;
                                              if (onAction) onAction();
                                            },
                                            ReminderAlarmServices{timers, timers, &local, &workspace, &distributed});
  }
  ~ReminderAlarmTest() override { qunsetenv("TZ"); }

  static double seconds(const char* text) { return at(text).timeIntervalSince1970(); }

  enum class State { Stopped, NothingDue, Armed, Snoozing };
  void expectState(State state, std::optional<Date> next) {
    EXPECT_EQ(alarm->isStarted(), state != State::Stopped);
    EXPECT_EQ(alarm->isSnoozing(), state == State::Snoozing);
    EXPECT_EQ(alarm->nextAlarmDate(), next);
    std::vector<double> due;
    if ((state == State::Armed || state == State::Snoozing) && next) due.push_back(next->timeIntervalSince1970());
    EXPECT_EQ(timers.due(), due);
  }

  // As the main application does it: the file changes, and then the notice comes.
  void changeSettings(quint64 count) {
    const auto other = PersistentPropertyList::withPropertyListURL(list->propertyListURL());
    interval.setIntervalValue(count);
    interval.writeToUserDefaults(*other);
    distributed.postNotification(Notice::reminderSettingsDidChange);
  }

  TestHome home;
  std::unique_ptr<PersistentPropertyList> list;
  bool listIsReadable{true};
  ReminderInterval interval;
  FakeTimers timers;
  FakeSystemEvents events;
  NotificationCenter local;
  NotificationCenter workspace;
  NotificationCenter distributed;
  std::unique_ptr<QObject> target;
  int actions{0};
  std::function<void()> onAction;
  std::unique_ptr<ReminderAlarm> alarm;
};

const Date today = at("2014-03-20T20:00:00Z");
const Date tomorrow = at("2014-03-21T20:00:00Z");
const Date dayAfter = at("2014-03-22T20:00:00Z");

}  // namespace

TEST_F(ReminderAlarmTest, StoppedStaysStopped) {
  expectState(State::Stopped, std::nullopt);
  alarm->reset();
  alarm->resetFromDate(today);
  alarm->snoozeForTimeInterval(60);
  alarm->stop();
  changeSettings(2);
  for (const auto event : {SystemEvent::ClockDidChange, SystemEvent::TimeZoneDidChange, SystemEvent::DidWake})
    events.send(event);
  expectState(State::Stopped, std::nullopt);
}

TEST_F(ReminderAlarmTest, StartWithNothingDue) {
  changeSettings(0);
  LogCapture log;
  alarm->start();
  expectState(State::NothingDue, std::nullopt);
  ASSERT_EQ(log.lines().size(), 2);
  EXPECT_TRUE(log.lines()[1].startsWith(
      u"-[ReminderAlarm resetFromDate:] Unable to calculate a reminder date for interval <ReminderInterval: 0x"_s));
  EXPECT_TRUE(log.lines()[1].contains(u"(unit:16 interval:0 "_s));
}

TEST_F(ReminderAlarmTest, AListThatCouldNotBeReadIsReadAtTheNextNotice) {
  listIsReadable = false;
  LogCapture log;
  alarm->start();
  EXPECT_EQ(log.lines(),
            QStringList(u"-[ReminderAlarm resetFromDate:] Unable to get reminder interval from user defaults"_s));
  expectState(State::NothingDue, std::nullopt);
  listIsReadable = true;
  changeSettings(1);
  expectState(State::Armed, today);
}

TEST_F(ReminderAlarmTest, FiresAndArmsTheReminderAfterTheOneThatFired) {
  for (int i = 0; i < 2; ++i) {
    alarm->start();
    expectState(State::Armed, today);
  }
  timers.runUntil(today.timeIntervalSince1970() - 1);
  EXPECT_EQ(actions, 0);
  timers.runUntil(today.timeIntervalSince1970() + 5);
  EXPECT_EQ(actions, 1);
  expectState(State::Armed, tomorrow);
  timers.runUntil(dayAfter.timeIntervalSince1970());
  EXPECT_EQ(actions, 3);
}

TEST_F(ReminderAlarmTest, SettingsAndSystemEventsRecalculateFromNow) {
  alarm->start();
  changeSettings(4);
  expectState(State::Armed, at("2014-03-22T20:00:00Z"));
  changeSettings(1);
  // Slept through today's reminder: it is not made up for.
  timers.setTime(today.timeIntervalSince1970() + 3600);
  events.send(SystemEvent::DidWake);
  expectState(State::Armed, tomorrow);
  timers.setTime(today.timeIntervalSince1970() - 3600);
  events.send(SystemEvent::ClockDidChange);
  expectState(State::Armed, today);
  // A clock that is set far off, and back. Years before the first reminder, that one is next.
  for (const auto& [now, next] : {std::pair{"2014-03-21T13:30:00Z", tomorrow},
                                  {"2014-03-19T13:30:00Z", at("2014-03-19T20:00:00Z")},
                                  {"2024-03-20T13:30:00Z", at("2024-03-20T20:00:00Z")},
                                  {"2004-03-20T13:30:00Z", at("2014-03-10T20:00:00Z")},
                                  {"2014-03-20T13:30:00Z", today}}) {
    timers.setTime(seconds(now));
    events.send(SystemEvent::ClockDidChange);
    expectState(State::Armed, next);
  }
  // The user has moved to New York: 21:00 there.
  qputenv("TZ", "America/New_York");
  events.send(SystemEvent::TimeZoneDidChange);
  expectState(State::Armed, at("2014-03-21T01:00:00Z"));
  EXPECT_EQ(actions, 0);
}

TEST_F(ReminderAlarmTest, SettingsThatGiveNothingKeepShowingThePreviousDate) {
  alarm->start();
  changeSettings(0);
  expectState(State::NothingDue, today);
  changeSettings(1);
  expectState(State::Armed, today);
}

TEST_F(ReminderAlarmTest, SnoozeFiresAtItsEndAndSkipsWhatItCovered) {
  alarm->start();
  timers.runUntil(today.timeIntervalSince1970());
  alarm->snoozeForTimeInterval(600);
  expectState(State::Snoozing, today.addingTimeInterval(600));
  // A longer one, past tomorrow's reminder.
  alarm->snoozeForTimeInterval(86400 + 600);
  expectState(State::Snoozing, tomorrow.addingTimeInterval(600));
  timers.runUntil(tomorrow.timeIntervalSince1970() + 599);
  EXPECT_EQ(actions, 1);
  timers.runUntil(tomorrow.timeIntervalSince1970() + 600);
  EXPECT_EQ(actions, 2);
  expectState(State::Armed, dayAfter);
}

TEST_F(ReminderAlarmTest, SettingsAndResetDropASnooze) {
  alarm->start();
  alarm->snoozeForTimeInterval(60);
  changeSettings(1);
  expectState(State::Armed, today);
  alarm->snoozeForTimeInterval(60);
  alarm->reset();
  expectState(State::Armed, today);
  alarm->snoozeForTimeInterval(60);
  alarm->stop();
  expectState(State::Stopped, std::nullopt);
}

TEST_F(ReminderAlarmTest, SystemEventWhileSnoozingArmsASecondTimerForTheSameEnd) {
  for (const auto event : {SystemEvent::ClockDidChange, SystemEvent::TimeZoneDidChange, SystemEvent::DidWake}) {
    alarm->start();
    actions = 0;
    alarm->snoozeForTimeInterval(600);
    const Date end = *alarm->nextAlarmDate();
    events.send(event);
    EXPECT_TRUE(alarm->isSnoozing());
    EXPECT_EQ(alarm->nextAlarmDate(), end);
    EXPECT_EQ(timers.due(), std::vector<double>(2, end.timeIntervalSince1970()));
    timers.runUntil(end.timeIntervalSince1970());
    EXPECT_EQ(actions, 2);
    // The reminder that the first one armed is still to come after the second.
    expectState(State::Armed, today);
    alarm->stop();
    timers.setTime(seconds("2014-03-20T13:30:00Z"));
  }
}

TEST_F(ReminderAlarmTest, BothTimersOfASnoozeEndWithIt) {
  const std::function<void()> endings[] = {[this] { alarm->stop(); }, [this] { changeSettings(1); },
                                           [this] { alarm->snoozeForTimeInterval(7200); }};
  for (const auto& ending : endings) {
    alarm->start();
    alarm->snoozeForTimeInterval(600);
    const double end = alarm->nextAlarmDate()->timeIntervalSince1970();
    events.send(SystemEvent::DidWake);
    ending();
    timers.runUntil(end);
    EXPECT_EQ(actions, 0);
    alarm->stop();
    timers.setTime(seconds("2014-03-20T13:30:00Z"));
  }
}

TEST_F(ReminderAlarmTest, ManySystemEventsInASnoozeUseFewTimers) {
  alarm->start();
  alarm->snoozeForTimeInterval(600);
  for (int i = 0; i < 1000; ++i) events.send(SystemEvent::ClockDidChange);
  EXPECT_LE(timers.due().size(), 8u);
}

TEST_F(ReminderAlarmTest, ActionMayDoAnythingToTheAlarm) {
  alarm->start();
  onAction = [this] { alarm->stop(); };
  timers.runUntil(today.timeIntervalSince1970());
  expectState(State::Stopped, std::nullopt);

  alarm->start();
  onAction = [this] { alarm.reset(); };
  timers.runUntil(dayAfter.timeIntervalSince1970() + 86400);
  EXPECT_EQ(actions, 2);
  EXPECT_TRUE(timers.due().empty());
}

TEST_F(ReminderAlarmTest, ADeadTargetHearsNothing) {
  alarm->start();
  target.reset();
  timers.runUntil(today.timeIntervalSince1970());
  EXPECT_EQ(actions, 0);
  expectState(State::Armed, tomorrow);
}

TEST_F(ReminderAlarmTest, DestroyedAlarmLeavesNothingBehind) {
  alarm->start();
  alarm.reset();
  EXPECT_TRUE(timers.due().empty());
  changeSettings(1);
  events.send(SystemEvent::DidWake);
  EXPECT_TRUE(timers.due().empty());
}

}  // namespace quillo
