#include "reminders/ReminderAlarm.h"

#include "config/Keys.h"
#include "foundation/Log.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"

#include <algorithm>
#include <iterator>

namespace quillo {

using namespace Qt::StringLiterals;

static constexpr auto resetMethod = "-[ReminderAlarm resetFromDate:]"_L1;

ReminderAlarm::ReminderAlarm(PersistentPropertyListSource propertyList, QObject* target, Action action,
                             const ReminderAlarmServices& services)
    : m_propertyList(std::move(propertyList)), m_target(target), m_action(std::move(action)), m_services(services) {}

ReminderAlarm::~ReminderAlarm() {
  stop();
}

Date ReminderAlarm::now() const {
  return Date::since1970(m_services.clock.secondsSince1970());
}

void ReminderAlarm::start() {
  if (m_isStarted) return;
  m_isStarted = true;
  const auto observe = [this](NotificationCenter* center, QLatin1StringView name, void (ReminderAlarm::*react)()) {
    if (center)
      m_observations.push_back(center->observe(name, [this, react](const Notification&) { (this->*react)(); }));
  };
  observe(m_services.localCenter, Notice::systemClockDidChange, &ReminderAlarm::alarmInvalidatingSystemEventOccurred);
  observe(m_services.localCenter, Notice::systemTimeZoneDidChange,
          &ReminderAlarm::alarmInvalidatingSystemEventOccurred);
  observe(m_services.workspaceCenter, Notice::workspaceDidWake, &ReminderAlarm::alarmInvalidatingSystemEventOccurred);
  observe(m_services.distributedCenter, Notice::reminderSettingsDidChange, &ReminderAlarm::reminderSettingsChanged);
  reset();
}

void ReminderAlarm::stop() {
  if (!m_isStarted) return;
  m_isStarted = false;
  m_observations.clear();
  m_nextAlarmDate.reset();
  m_isSnoozing = false;
  m_timers.clear();
}

void ReminderAlarm::reset() {
  resetFromDate(std::nullopt);
}

void ReminderAlarm::resetFromDate(std::optional<Date> date) {
  m_timers.clear();
  m_isSnoozing = false;
  if (!m_isStarted) return;
  PersistentPropertyList* const list = m_propertyList();
  if (!list) {
    QLLogInfo(resetMethod, u"Unable to get reminder interval from user defaults"_s);
    return;
  }
  list->synchronize();
  const ReminderInterval interval = ReminderInterval::reminderIntervalFromUserDefaults(*list);
  const auto next = ReminderCalculator::firstReminderForInterval(interval, date ? *date : now(), std::nullopt);
  if (!next) {
    QLLogInfo(resetMethod, u"Unable to calculate a reminder date for interval %1"_s.arg(interval.description()));
    return;
  }
  scheduleNextAlarm(*next);
}

void ReminderAlarm::scheduleNextAlarm(Date date) {
  m_nextAlarmDate = date;
  QLLogDebug(u"The next reminder is due at %1"_s.arg(date.toDateTime().toString(Qt::ISODate)));
  // A timer already there stays armed. Callers clear it first, all but a system event during a snooze: then both fire
  // at the end of the snooze, and the second finds the first one's date given already. Beyond a handful the oldest
  // goes, or a clock that is set every second would use up the process's descriptors.
  static constexpr size_t mostTimers = 8;
  if (m_timers.size() >= mostTimers) m_timers.erase(m_timers.begin());
  const quint64 number = ++m_timersArmed;
  m_timers.push_back({number, date, m_services.timers.schedule(date.timeIntervalSince1970(), [this, number] {
                        alarmTimerFired(number);
                      })});
}

void ReminderAlarm::alarmTimerFired(quint64 number) {
  const auto byNumber = [number](const ArmedTimer& timer) { return timer.number == number; };
  const auto found = std::find_if(m_timers.begin(), m_timers.end(), byNumber);
  if (found == m_timers.end()) return;
  // Kept to the end of this function, which it is calling.
  const ArmedTimer fired = std::move(*found);
  m_timers.erase(found);

  m_isSnoozing = false;
  const std::weak_ptr<bool> life = m_life;
  if (m_target && m_action) m_action(*this);
  if (life.expired()) return;

  // The second timer of a snooze fires, too.
  std::vector<ArmedTimer> seconds;
  std::copy_if(std::make_move_iterator(m_timers.begin()), std::make_move_iterator(m_timers.end()),
               std::back_inserter(seconds), [&fired](const ArmedTimer& timer) { return timer.date == fired.date; });
  // Not from nextAlarmDate(): when the second timer fires, that is the regular reminder, which is still to come.
  resetFromDate(fired.date);
  m_timers.insert(m_timers.begin(), std::make_move_iterator(seconds.begin()), std::make_move_iterator(seconds.end()));
}

void ReminderAlarm::snoozeForTimeInterval(double seconds) {
  if (!m_isStarted) return;
  m_timers.clear();
  m_isSnoozing = true;
  scheduleNextAlarm(now().addingTimeInterval(seconds));
}

void ReminderAlarm::alarmInvalidatingSystemEventOccurred() {
  if (!m_isSnoozing) return reset();
  if (m_nextAlarmDate) scheduleNextAlarm(*m_nextAlarmDate);
}

void ReminderAlarm::reminderSettingsChanged() {
  reset();
}

}  // namespace quillo
