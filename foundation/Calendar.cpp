#include "foundation/Calendar.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace quillo {

namespace {

namespace chrono = std::chrono;

constexpr qint64 secondsPerDay = 86400;
constexpr qint64 daysPerWeek = 7;

// Seconds since 1970 of the calendar's first instant and of the one after its last.
constexpr double rangeBegin = -62135596800.0;
constexpr double rangeEnd = 253402300800.0;

bool isInRange(double seconds) {
  // Not a number is not.
  return seconds >= rangeBegin && seconds < rangeEnd;
}

qint64 floorDiv(qint64 a, qint64 b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// The wall-clock reading of a date: a day, the time on it, and the fraction of a second.
struct Reading {
  chrono::sys_days day;
  qint64 secondOfDay;
  double fraction;
};

std::optional<Reading> readingOf(Date date, const TimeZone& zone) {
  const double seconds = date.timeIntervalSince1970();
  if (!isInRange(seconds)) return std::nullopt;
  const auto whole = static_cast<qint64>(std::floor(seconds));
  const qint64 reading = whole + zone.secondsFromUTC(whole);
  const qint64 day = floorDiv(reading, secondsPerDay);
  return Reading{chrono::sys_days(chrono::days(static_cast<int>(day))), reading - day * secondsPerDay,
                 seconds - static_cast<double>(whole)};
}

std::optional<Date> dateOf(qint64 day, qint64 secondOfDay, double fraction, const TimeZone& zone) {
  // A day of slack on each side: the zone may bring the reading back into the range.
  static constexpr auto firstDay = static_cast<qint64>(rangeBegin) / secondsPerDay - 2;
  static constexpr auto lastDay = static_cast<qint64>(rangeEnd) / secondsPerDay + 2;
  if (day < firstDay || day > lastDay) return std::nullopt;
  const double seconds = static_cast<double>(zone.instantOfReading(day * secondsPerDay + secondOfDay)) + fraction;
  if (!isInRange(seconds)) return std::nullopt;
  return Date::since1970(seconds);
}

// The `month`th month, counted from January of year 0.
std::optional<chrono::year_month> yearMonth(qint64 month) {
  const qint64 year = floorDiv(month, 12);
  if (year < -1 || year > 10001) return std::nullopt;
  return chrono::year(static_cast<int>(year)) / chrono::month(static_cast<unsigned>(month - year * 12 + 1));
}

qint64 monthsOf(chrono::year_month_day date) {
  return qint64{static_cast<int>(date.year())} * 12 + static_cast<unsigned>(date.month()) - 1;
}

// What a unit is made of; all zero for the era.
struct Step {
  qint64 months{0};
  qint64 days{0};
  qint64 seconds{0};
};

Step stepOf(CalendarUnit unit) {
  switch (unit) {
    case CalendarUnit::Era:
      return {};
    case CalendarUnit::Year:
      return {.months = 12};
    case CalendarUnit::Quarter:
      return {.months = 3};
    case CalendarUnit::Month:
      return {.months = 1};
    case CalendarUnit::Week:
    case CalendarUnit::WeekdayOrdinal:
      return {.days = daysPerWeek};
    case CalendarUnit::Day:
    case CalendarUnit::Weekday:
      return {.days = 1};
    case CalendarUnit::Hour:
      return {.seconds = 3600};
    case CalendarUnit::Minute:
      return {.seconds = 60};
    case CalendarUnit::Second:
      return {.seconds = 1};
  }
  return {};
}

}  // namespace

std::optional<Calendar> Calendar::withTimeZoneName(const QString& name) {
  auto zone = TimeZone::timeZoneWithName(name);
  if (!zone) return std::nullopt;
  return Calendar(*std::move(zone));
}

std::optional<DateComponents> Calendar::componentsFromDate(quint64 mask, Date date) const {
  const auto reading = readingOf(date, m_timeZone);
  if (!reading) return std::nullopt;
  const chrono::year_month_day civil(reading->day);
  const chrono::sys_days newYear(civil.year() / 1 / 1);
  const auto day = static_cast<unsigned>(civil.day());
  const auto month = static_cast<unsigned>(civil.month());
  const qint64 weekdayOfNewYear = chrono::weekday(newYear).c_encoding();
  const bool lastDaysOfYear = month == 12 && 31 - day < 6 - chrono::weekday(reading->day).c_encoding();

  DateComponents parts;
  const auto set = [&](CalendarUnit unit, qint64 value) {
    if (mask & static_cast<quint64>(unit)) parts[unit] = value;
  };
  set(CalendarUnit::Era, 1);
  set(CalendarUnit::Year, static_cast<int>(civil.year()));
  set(CalendarUnit::Month, month);
  set(CalendarUnit::Day, day);
  set(CalendarUnit::Hour, reading->secondOfDay / 3600);
  set(CalendarUnit::Minute, reading->secondOfDay / 60 % 60);
  set(CalendarUnit::Second, reading->secondOfDay % 60);
  // The last days of December belong to the week that holds the next 1 January.
  set(CalendarUnit::Week, lastDaysOfYear ? 1 : ((reading->day - newYear).count() + weekdayOfNewYear) / daysPerWeek + 1);
  set(CalendarUnit::Weekday, chrono::weekday(reading->day).c_encoding() + 1);
  set(CalendarUnit::WeekdayOrdinal, (day - 1) / 7 + 1);
  set(CalendarUnit::Quarter, (month - 1) / 3 + 1);
  return parts;
}

std::optional<Date> Calendar::dateFromComponents(const DateComponents& components) const {
  // Large enough for every date counted in seconds, and far from overflow below.
  static constexpr qint64 limit = 1'000'000'000'000;
  for (const auto& part :
       {components.year, components.month, components.day, components.hour, components.minute, components.second}) {
    if (part && (*part < -limit || *part > limit)) return std::nullopt;
  }
  const auto month = yearMonth(components.year.value_or(1) * 12 + components.month.value_or(1) - 1);
  if (!month) return std::nullopt;
  const qint64 seconds =
      components.hour.value_or(0) * 3600 + components.minute.value_or(0) * 60 + components.second.value_or(0);
  const qint64 days = chrono::sys_days(*month / 1).time_since_epoch().count() + components.day.value_or(1) - 1;
  const qint64 carried = floorDiv(seconds, secondsPerDay);
  return dateOf(days + carried, seconds - carried * secondsPerDay, 0, m_timeZone);
}

std::optional<Date> Calendar::dateOfReading(QDate day, QTime time) const {
  if (!day.isValid() || !time.isValid()) return std::nullopt;
  DateComponents components;
  components.year = day.year();
  components.month = day.month();
  components.day = day.day();
  components.second = time.msecsSinceStartOfDay() / 1000;
  return dateFromComponents(components);
}

std::optional<Date> Calendar::dateByAdding(qint64 count, CalendarUnit unit, Date date) const {
  const double start = date.timeIntervalSince1970();
  if (!isInRange(start)) return std::nullopt;
  if (count == 0) return date;

  const Step step = stepOf(unit);
  if (step.seconds != 0) {
    const double seconds = start + static_cast<double>(count) * static_cast<double>(step.seconds);
    if (!isInRange(seconds)) return std::nullopt;
    return date.addingTimeInterval(static_cast<double>(count) * static_cast<double>(step.seconds));
  }

  // No count that stays in the range is larger; the products below cannot overflow.
  static constexpr qint64 mostDays = 4'000'000;
  if ((step.days == 0 && step.months == 0) || count < -mostDays || count > mostDays) return std::nullopt;
  const auto reading = readingOf(date, m_timeZone);
  if (!reading) return std::nullopt;
  qint64 day = reading->day.time_since_epoch().count() + count * step.days;
  if (step.months != 0) {
    const chrono::year_month_day civil(reading->day);
    const auto month = yearMonth(monthsOf(civil) + count * step.months);
    if (!month) return std::nullopt;
    const chrono::day last = (*month / chrono::last).day();
    day = chrono::sys_days(*month / std::min(civil.day(), last)).time_since_epoch().count();
  }
  return dateOf(day, reading->secondOfDay, reading->fraction, m_timeZone);
}

std::optional<qint64> Calendar::wholeUnitsBetween(Date from, Date to, CalendarUnit unit) const {
  const Step step = stepOf(unit);
  if (step.seconds != 0) {
    if (!isInRange(from.timeIntervalSince1970()) || !isInRange(to.timeIntervalSince1970())) return std::nullopt;
    return static_cast<qint64>(to.timeIntervalSince(from) / static_cast<double>(step.seconds));
  }
  const auto begin = readingOf(from, m_timeZone);
  const auto end = readingOf(to, m_timeZone);
  if (!begin || !end || (step.days == 0 && step.months == 0)) return std::nullopt;

  const bool forward = from <= to;
  const qint64 direction = forward ? 1 : -1;
  const auto fits = [&](qint64 count) {
    const auto date = dateByAdding(count * direction, unit, from);
    return date && (forward ? *date <= to : *date >= to);
  };
  // An estimate from the days or months on the calendar, one unit too large at most; clock changes of up to a day
  // each, at both ends, can make it wrong by two more. Zero units always fit.
  const qint64 distance =
      step.months != 0 ? monthsOf(chrono::year_month_day(end->day)) - monthsOf(chrono::year_month_day(begin->day))
                       : qint64{(end->day - begin->day).count()};
  qint64 count = std::max<qint64>(0, direction * distance / (step.months + step.days));
  static constexpr int mostCorrections = 4;
  for (int i = 0; i < mostCorrections && count > 0 && !fits(count); ++i) --count;
  for (int i = 0; i < mostCorrections && fits(count + 1); ++i) ++count;
  return count * direction;
}

}  // namespace quillo
