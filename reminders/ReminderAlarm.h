#pragma once

#include "config/PersistentPropertyList.h"
#include "foundation/Date.h"
#include "foundation/NotificationCenter.h"
#include "platform/Clock.h"
#include "platform/OneShotTimer.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillo {

// What the alarm hears and moves by. All of it must outlive the alarm; without one of the centres it does not hear of
// what would be told there.
struct ReminderAlarmServices {
  const Clock& clock;
  OneShotTimerFactory& timers;
  NotificationCenter* localCenter{nullptr};
  NotificationCenter* workspaceCenter{nullptr};
  NotificationCenter* distributedCenter{nullptr};
};

// Keeps one timer armed for the next journal reminder, acts when it fires, and arms the next. The date is kept and the
// delay derived from it: whenever the settings, the clock, the time zone or the machine's sleep change anything, the
// next reminder is calculated again from now. A reminder that passed while the machine slept is not made up for by
// that.
//
// Stopped until start(). Main thread only.
class ReminderAlarm {
 public:
  using Action = std::function<void(ReminderAlarm&)>;

  // The settings are read from `propertyList` at each reset; where it answers null there is no reminder.
  // `action` is called when the alarm fires, while `target` lives; it may do anything to the alarm, even destroy it.
  ReminderAlarm(PersistentPropertyListSource propertyList, QObject* target, Action action,
                const ReminderAlarmServices& services);
  ~ReminderAlarm();
  ReminderAlarm(const ReminderAlarm&) = delete;
  ReminderAlarm& operator=(const ReminderAlarm&) = delete;

  void start();
  void stop();
  // From now. A snooze is dropped.
  void reset();
  // Arms the first reminder after `date`, or after now. Where there is none, that is logged, no timer is armed, and
  // nextAlarmDate() keeps the previous date, which the menu goes on to show. Of a stopped alarm it only ends the
  // snooze.
  void resetFromDate(std::optional<Date> date);
  // Fires again after so many seconds instead of at the next reminder. Nothing while stopped.
  void snoozeForTimeInterval(double seconds);

  // What the timer is armed for: a regular reminder or the end of a snooze. Nothing after stop().
  [[nodiscard]] std::optional<Date> nextAlarmDate() const { return m_nextAlarmDate; }
  [[nodiscard]] bool isSnoozing() const { return m_isSnoozing; }
  [[nodiscard]] bool isStarted() const { return m_isStarted; }

 private:
  struct ArmedTimer {
    quint64 number;
    Date date;
    std::unique_ptr<OneShotTimer> timer;
  };

  void scheduleNextAlarm(Date date);
  void alarmTimerFired(quint64 number);
  void alarmInvalidatingSystemEventOccurred();
  void reminderSettingsChanged();
  [[nodiscard]] Date now() const;

  PersistentPropertyListSource m_propertyList;
  QPointer<QObject> m_target;
  Action m_action;
  ReminderAlarmServices m_services;
  std::vector<std::unique_ptr<Registration>> m_observations;
  bool m_isStarted{false};
  bool m_isSnoozing{false};
  std::optional<Date> m_nextAlarmDate;
  // One, but for a snooze during which a system event came.
  std::vector<ArmedTimer> m_timers;
  quint64 m_timersArmed{0};
  // Expires with this object.
  std::shared_ptr<bool> m_life{std::make_shared<bool>(true)};
};

}  // namespace quillo
