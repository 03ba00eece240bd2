#pragma once

#include "foundation/Date.h"
#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <QDateTime>

#include <optional>

namespace quillo {

// The Gregorian calendar in a time zone, counted back over the days before its introduction too. It covers the years 1
// to 9999 (UTC): what begins or ends outside, and what is NaN, gives nothing.
//
// Wall-clock arithmetic: years, quarters, months, weeks and days keep the time of day over every change of the clock;
// hours, minutes and seconds are elapsed time. A reading that the clock jumps over moves forward by the jump (02:30
// becomes 03:30; a day left out becomes the next), and of one that occurs twice the earlier is meant.
class Calendar {
 public:
  explicit Calendar(TimeZone timeZone) : m_timeZone(std::move(timeZone)) {}
  // Nothing when there is no zone of that name.
  [[nodiscard]] static std::optional<Calendar> withTimeZoneName(const QString& name);
  // In the user's time zone as it is now; ask again after the zone may have changed.
  [[nodiscard]] static Calendar currentCalendar() { return Calendar(TimeZone::systemTimeZone()); }

  [[nodiscard]] const TimeZone& timeZone() const { return m_timeZone; }

  // The parts of `date` whose unit is in `mask`. Fractions of a second are dropped.
  [[nodiscard]] std::optional<DateComponents> componentsFromDate(quint64 mask, Date date) const;

  // Put together from year, month, day, hour, minute and second; the other parts are ignored. Absent parts are those of
  // the first instant of year 1. Parts beyond their usual range count on: month 13 is the next January, day 0 the last
  // day of the month before.
  [[nodiscard]] std::optional<Date> dateFromComponents(const DateComponents& components) const;

  // The same of a day and a time of the day, to the second: when a clock reads that.
  [[nodiscard]] std::optional<Date> dateOfReading(QDate day, QTime time) const;

  // `date` plus `count` units. A day of the month that the target month lacks becomes its last. Weekdays count as days
  // and weekday ordinals as weeks; there is nothing to add in eras. Nothing to add leaves `date` as it is.
  [[nodiscard]] std::optional<Date> dateByAdding(qint64 count, CalendarUnit unit, Date date) const;

  // How many whole units fit between the dates: the count furthest from zero for which dateByAdding(count, unit, from)
  // does not pass `to`. Negative where `to` is before `from`.
  [[nodiscard]] std::optional<qint64> wholeUnitsBetween(Date from, Date to, CalendarUnit unit) const;

  bool operator==(const Calendar&) const = default;

 private:
  TimeZone m_timeZone;
};

}  // namespace quillo
