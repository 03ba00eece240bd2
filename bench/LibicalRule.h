#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"
#include "foundation/DateComponents.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"

#include <libical/ical.h>

#include <optional>
#include <string>

namespace quillo {

// One rule of each family of steps, for us and as iCalendar writes it. Each begins at 09:00 on 10 March and is asked at
// 10:05 on 20 March 2026, in Berlin.
struct Rule {
  const char* name;
  CalendarUnit unit;
  quint64 count;
  double period;  // seconds
  const char* recurrence;
};

inline constexpr Rule rules[] = {
    {"day", CalendarUnit::Day, 1, 0, "FREQ=DAILY"},
    {"two_weeks", CalendarUnit::Week, 2, 0, "FREQ=WEEKLY;INTERVAL=2"},
    {"month", CalendarUnit::Month, 1, 0, "FREQ=MONTHLY"},
    {"quarter", CalendarUnit::Quarter, 1, 0, "FREQ=MONTHLY;INTERVAL=3"},
    {"year", CalendarUnit::Year, 1, 0, "FREQ=YEARLY"},
    {"three_hours_in_window", CalendarUnit::Hour, 3, 28800, "FREQ=DAILY;BYHOUR=9,12,15"},
    {"twenty_minutes_in_window", CalendarUnit::Minute, 20, 27600,
     "FREQ=DAILY;BYHOUR=9,10,11,12,13,14,15,16;BYMINUTE=0,20,40"},
};
inline constexpr int yearOfQuestion = 2026;

inline Date momentOfQuestion() {
  return *Date::fromISO8601(QStringLiteral("%1-03-20T09:05:00Z").arg(yearOfQuestion));
}

class OwnRule {
 public:
  OwnRule(const Rule& rule, int baseYear) {
    m_interval.setCalendarUnit(rule.unit);
    m_interval.setIntervalValue(rule.count);
    m_interval.setValidReminderPeriod(rule.period);
    m_interval.setBaseCalendar(m_berlin);
    DateComponents base;
    base.year = baseYear;
    base.month = 3;
    base.day = 10;
    base.hour = 9;
    m_interval.setBaseDate(m_berlin.dateFromComponents(base));
  }

  [[nodiscard]] auto firstAfter(const Date& moment) const {
    return ReminderCalculator::firstReminderForInterval(m_interval, moment, m_berlin);
  }

 private:
  Calendar m_berlin{*Calendar::withTimeZoneName(QStringLiteral("Europe/Berlin"))};
  ReminderInterval m_interval;
};

class LibicalRule {
 public:
  LibicalRule(const Rule& rule, int baseYear) {
    icaltimezone_set_tzid_prefix("");
    m_zone = icaltimezone_get_builtin_timezone("Europe/Berlin");
    m_rule = icalrecurrencetype_from_string(rule.recurrence);
    m_base = icaltime_from_string((std::to_string(baseYear) + "0310T090000").c_str());
  }
  [[nodiscard]] bool isUsable() const { return m_zone && m_rule.freq != ICAL_NO_RECURRENCE; }

  // 0 where the iterator gives up. With `jump` it starts at the date asked about, else at the rule's first date.
  [[nodiscard]] time_t firstAfter(time_t moment, bool jump) const {
    const icaltimetype after = icaltime_from_timet_with_zone(moment, 0, m_zone);
    icalrecur_iterator* iterator = icalrecur_iterator_new(m_rule, m_base);
    if (!iterator) return 0;
    if (jump) icalrecur_iterator_set_start(iterator, after);
    // Ends: the rules have no end, and each turn leads to a later date.
    icaltimetype next = icalrecur_iterator_next(iterator);
    while (!icaltime_is_null_time(next) && icaltime_compare(next, after) <= 0) next = icalrecur_iterator_next(iterator);
    icalrecur_iterator_free(iterator);
    return icaltime_is_null_time(next) ? 0 : icaltime_as_timet_with_zone(next, m_zone);
  }

 private:
  icaltimezone* m_zone{nullptr};
  icalrecurrencetype m_rule;
  icaltimetype m_base;
};

}  // namespace quillo
