#include "reminders/ReminderCalculator.h"

#include "foundation/Log.h"
#include "reminders/ReminderInterval.h"

#include <cmath>
#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 componentMask = CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day | CalendarUnit::Hour |
                                  CalendarUnit::Minute | CalendarUnit::Second | CalendarUnit::Week |
                                  CalendarUnit::Weekday;
static_assert(componentMask == 1020);

std::nullopt_t noReminder(QLatin1StringView why, const ReminderInterval& interval) {
  QLLogInfo("+[ReminderCalculator firstReminderForInterval:afterDate:calendar:]"_L1,
            u"Cannot calculate a reminder date with %1 %2"_s.arg(why, interval.description()));
  return std::nullopt;
}

std::optional<Date> firstCalendarStep(const ReminderInterval& interval, CalendarUnit unit, Date base, Date after,
                                      const Calendar& calendar) {
  const auto whole = calendar.wholeUnitsBetween(base, after, unit);
  if (!whole) return noReminder("a step that leads nowhere"_L1, interval);
  const quint64 step = interval.intervalValue();
  static constexpr quint64 largest = std::numeric_limits<qint64>::max();
  quint64 count = static_cast<quint64>(*whole) / step * step;
  // The first candidate may be at or before `after`. The second is more than `whole` units away, so it is later. Each
  // is counted from the base.
  for (int candidates = 0; candidates < 2 && count <= largest; ++candidates) {
    const auto candidate = calendar.dateByAdding(static_cast<qint64>(count), unit, base);
    if (!candidate) break;
    if (*candidate > after) return candidate;
    if (step > largest - count) break;
    count += step;
  }
  return noReminder("a step out of the calendar"_L1, interval);
}

// The reading of the clock at the end of the window. The calendar begins again every 400 years, down to the weekday, so
// a period that leads out of it still ends at an hour and minute. Nothing where the period has no end.
std::optional<DateComponents> windowEndComponents(const ReminderInterval& interval) {
  static constexpr double secondsIn400Years = 146097.0 * 86400.0;
  const double period = interval.validReminderPeriod();
  if (!std::isfinite(period)) return std::nullopt;
  const double shortened = std::fmod(period, secondsIn400Years);
  for (const double seconds : {period, shortened, shortened - std::copysign(secondsIn400Years, shortened)}) {
    const Date end = interval.baseDate()->addingTimeInterval(seconds);
    if (const auto parts = interval.baseCalendar()->componentsFromDate(componentMask, end)) return parts;
  }
  return std::nullopt;
}

struct Window {
  Date start;
  Date end;
};

// The daily window on the calendar day of `after`. Its end takes only the hour and minute of the period's end and is
// placed on the day of the start. A window over midnight therefore ends before it starts and gives one reminder a day,
// at its start. The main application announces the same times, so both must count so.
std::optional<Window> windowOfDay(const ReminderInterval& interval, const DateComponents& baseParts, Date after,
                                  const Calendar& calendar) {
  const auto day = calendar.componentsFromDate(componentMask, after);
  if (!day) return std::nullopt;
  // Not a number is a period, too; it has no end.
  const bool wholeDay = interval.validReminderPeriod() == 0;
  DateComponents reading;
  reading.year = day->year;
  reading.month = day->month;
  reading.day = day->day;
  if (!wholeDay) {
    reading.hour = baseParts.hour;
    reading.minute = baseParts.minute;
  }
  const auto start = calendar.dateFromComponents(reading);
  if (!start) return std::nullopt;
  std::optional<Date> end;
  if (wholeDay) {
    end = calendar.dateByAdding(1, CalendarUnit::Day, *start);
  } else if (const auto endParts = windowEndComponents(interval)) {
    reading.hour = endParts->hour;
    reading.minute = endParts->minute;
    end = calendar.dateFromComponents(reading);
  }
  if (!end) return std::nullopt;
  return Window{*start, *end};
}

std::optional<Date> firstClockStep(const ReminderInterval& interval, CalendarUnit unit, const DateComponents& baseParts,
                                   Date after, const Calendar& calendar) {
  const auto window = windowOfDay(interval, baseParts, after, calendar);
  if (!window) return noReminder("a window out of the calendar"_L1, interval);
  const Date start = window->start;
  if (start > after) return start;

  if (after < window->end) {
    // Steps are elapsed time from the start. The division finds the first one after `after` without walking there,
    // however small the step is; a step of any size is answered, because one that leads past the end is not taken.
    const double step = static_cast<double>(interval.intervalValue()) * (unit == CalendarUnit::Hour ? 3600.0 : 60.0);
    const double steps = std::floor(after.timeIntervalSince(start) / step) + 1;
    const Date candidate = start.addingTimeInterval(steps * step);
    if (candidate <= window->end && candidate > after) return candidate;
  }
  // Tomorrow's start. Where the clock was once set back by a whole day, that reading came before `after` already: the
  // days that follow are tried, and there are no two such changes in a row.
  for (qint64 days = 1; days <= 3; ++days) {
    const auto tomorrow = calendar.dateByAdding(days, CalendarUnit::Day, start);
    if (tomorrow && *tomorrow > after) return tomorrow;
  }
  return noReminder("a step out of the calendar"_L1, interval);
}

}  // namespace

std::optional<Date> ReminderCalculator::firstReminderForInterval(const ReminderInterval& interval) {
  return firstReminderForInterval(interval, std::nullopt, std::nullopt);
}

std::optional<Date> ReminderCalculator::firstReminderForInterval(const ReminderInterval& interval,
                                                                 std::optional<Date> afterDate,
                                                                 const std::optional<Calendar>& givenCalendar) {
  const Date after = afterDate ? *afterDate : Date::now();
  const Calendar calendar = givenCalendar ? *givenCalendar : Calendar::currentCalendar();
  if (!interval.baseDate()) return noReminder("no base date"_L1, interval);
  if (!interval.baseCalendar()) return noReminder("no base calendar"_L1, interval);

  const auto baseParts = interval.baseCalendar()->componentsFromDate(componentMask, *interval.baseDate());
  const auto base = baseParts ? calendar.dateFromComponents(*baseParts) : std::nullopt;
  if (!base) return noReminder("a base date out of the calendar"_L1, interval);
  if (*base > after) return base;
  if (interval.intervalValue() == 0) return noReminder("a zero interval"_L1, interval);
  const auto unit = calendarUnitWithValue(interval.calendarUnit());
  if (!unit) return noReminder("an unknown unit"_L1, interval);

  if (*unit == CalendarUnit::Hour || *unit == CalendarUnit::Minute)
    return firstClockStep(interval, *unit, *baseParts, after, calendar);
  return firstCalendarStep(interval, *unit, *base, after, calendar);
}

}  // namespace quillo
