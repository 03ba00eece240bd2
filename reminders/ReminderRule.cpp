#include "reminders/ReminderRule.h"

#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 dayMask = CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day;
constexpr int minutesOfDay = 24 * 60;

// Seconds, quarters and the like are nowhere offered.
bool isOffered(CalendarUnit unit) {
  switch (unit) {
    case CalendarUnit::Minute:
    case CalendarUnit::Hour:
    case CalendarUnit::Day:
    case CalendarUnit::Week:
    case CalendarUnit::Month:
    case CalendarUnit::Year:
      return true;
    case CalendarUnit::Era:
    case CalendarUnit::Second:
    case CalendarUnit::Weekday:
    case CalendarUnit::WeekdayOrdinal:
    case CalendarUnit::Quarter:
      return false;
  }
  return false;
}

std::optional<int> minuteOfDay(Date date, const Calendar& calendar) {
  const auto parts = calendar.componentsFromDate(CalendarUnit::Hour | CalendarUnit::Minute, date);
  if (!parts) return std::nullopt;
  return static_cast<int>(parts->hour.value_or(0) * 60 + parts->minute.value_or(0));
}

QString timeOfDay(Date date, const Calendar& calendar) {
  const auto minute = minuteOfDay(date, calendar);
  return minute ? timeOfDayText(*minute) : date.toISO8601();
}

}  // namespace

bool isClockStep(quint64 unit) {
  return unit == static_cast<quint64>(CalendarUnit::Hour) || unit == static_cast<quint64>(CalendarUnit::Minute);
}

std::optional<ReminderRule> ReminderRule::ofInterval(const ReminderInterval& interval) {
  const auto unit = calendarUnitWithValue(interval.calendarUnit());
  const auto& base = interval.baseDate();
  const auto& calendar = interval.baseCalendar();
  if (!unit || !isOffered(*unit) || interval.intervalValue() == 0 || !base || !calendar) return std::nullopt;
  const auto from = minuteOfDay(*base, *calendar);
  if (!from) return std::nullopt;
  ReminderRule rule{.count = interval.intervalValue(), .unit = *unit, .starting = *base, .calendar = *calendar};
  const double period = interval.validReminderPeriod();
  if (!isClockStep(interval.calendarUnit()) || period == 0) return rule;
  if (!std::isfinite(period)) return std::nullopt;
  // Only the end's time of day counts: whole days make no difference, whichever way they go.
  auto minutes = static_cast<int>(std::fmod(std::round(period / 60), minutesOfDay));
  if (minutes <= 0) minutes += minutesOfDay;
  rule.window = DailyWindow{*from, *from + minutes};
  return rule;
}

std::optional<ReminderInterval> ReminderRule::interval() const {
  ReminderInterval made;
  made.setIntervalValue(count);
  made.setCalendarUnit(unit);
  std::optional<Date> base = starting;
  if (window && isClockStep(made.calendarUnit())) {
    auto day = calendar.componentsFromDate(dayMask, starting);
    if (!day) return std::nullopt;
    day->hour = window->from / 60;
    day->minute = window->from % 60;
    base = calendar.dateFromComponents(*day);
    made.setValidReminderPeriod((window->until - window->from) * 60.0);
  }
  if (!base) return std::nullopt;
  // To the minute, so that the reminder comes on the dot.
  made.setBaseDate(Date::since1970(std::floor(base->timeIntervalSince1970() / 60) * 60));
  made.setBaseCalendar(calendar);
  return made;
}

QString reminderInWords(const ReminderInterval& interval, const QString& window) {
  QString rule = u"Every "_s + (interval.intervalValue() == 1 ? interval.stringValue().mid(2) : interval.stringValue());
  const auto& base = interval.baseDate();
  const auto& calendar = interval.baseCalendar();
  if (!base || !calendar) return rule;
  if (!isClockStep(interval.calendarUnit())) return rule + u" at "_s + timeOfDay(*base, *calendar);
  if (interval.validReminderPeriod() == 0) return rule;
  return rule + window.arg(timeOfDay(*base, *calendar),
                           timeOfDay(base->addingTimeInterval(interval.validReminderPeriod()), *calendar));
}

QList<Date> nextReminders(const ReminderInterval& interval, Date after, int count) {
  QList<Date> dates;
  for (int i = 0; i < count; ++i) {
    const auto next = ReminderCalculator::firstReminderForInterval(interval, after, std::nullopt);
    if (!next) break;
    dates << *next;
    after = *next;
  }
  return dates;
}

QString timeOfDayText(int minutesSinceMidnight) {
  return u"%1:%2"_s.arg(minutesSinceMidnight / 60, 2, 10, QChar(u'0'))
      .arg(minutesSinceMidnight % 60, 2, 10, QChar(u'0'));
}

}  // namespace quillo
