#include "reminders/ReminderInterval.h"

#include "config/Keys.h"
#include "reminders/DateComponentsQLAdditions.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The word after the number, without the plural's "s"; empty for a unit that has none.
QLatin1StringView unitWord(quint64 unit) {
  const auto known = calendarUnitWithValue(unit);
  if (!known) return {};
  switch (*known) {
    case CalendarUnit::Year:
    case CalendarUnit::Month:
    case CalendarUnit::Day:
    case CalendarUnit::Hour:
    case CalendarUnit::Minute:
    case CalendarUnit::Second:
    case CalendarUnit::Week:
      return QLAdditions::keyForCalendarUnit(unit).value_or(QLatin1StringView());
    case CalendarUnit::Era:
    case CalendarUnit::Weekday:
    case CalendarUnit::WeekdayOrdinal:
    case CalendarUnit::Quarter:
      return {};
  }
  return {};
}

}  // namespace

ReminderInterval ReminderInterval::read(
    const std::function<std::optional<PropertyListValue>(const QString&)>& valueForKey) {
  ReminderInterval interval;
  // The unsigned reading keeps the bits of counts beyond 2^63.
  if (const auto value = valueForKey(Key::remindersFrequency)) interval.m_calendarUnit = value->unsignedIntegerValue();
  if (const auto value = valueForKey(Key::remindersInterval)) interval.m_intervalValue = value->unsignedIntegerValue();
  if (const auto value = valueForKey(Key::remindersValidPeriod)) interval.m_validReminderPeriod = value->doubleValue();
  if (const auto value = valueForKey(Key::remindersBaseDate)) interval.m_baseDate = value->date();
  if (const auto value = valueForKey(Key::remindersBaseDateTimezone))
    interval.m_baseCalendar = Calendar::withTimeZoneName(value->string());
  return interval;
}

ReminderInterval ReminderInterval::reminderIntervalFromUserDefaults(const PropertyListDictionary& values) {
  return read([&values](const QString& key) -> std::optional<PropertyListValue> {
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    return *found;
  });
}

void ReminderInterval::write(
    const std::function<void(const PropertyListValue&, const QString&)>& setObjectForKey) const {
  setObjectForKey(m_calendarUnit, Key::remindersFrequency);
  setObjectForKey(m_intervalValue, Key::remindersInterval);
  setObjectForKey(m_validReminderPeriod, Key::remindersValidPeriod);
  if (m_baseDate) setObjectForKey(*m_baseDate, Key::remindersBaseDate);
  if (m_baseCalendar) setObjectForKey(m_baseCalendar->timeZone().name(), Key::remindersBaseDateTimezone);
}

std::optional<Date> ReminderInterval::baseDateInCurrentTimeZone() const {
  if (!m_baseDate || !m_baseCalendar) return std::nullopt;
  static constexpr quint64 mask = CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day | CalendarUnit::Hour |
                                  CalendarUnit::Minute | CalendarUnit::Second;
  const auto reading = m_baseCalendar->componentsFromDate(mask, *m_baseDate);
  if (!reading) return std::nullopt;
  return Calendar::currentCalendar().dateFromComponents(*reading);
}

std::optional<DateComponents> ReminderInterval::dateComponents() const {
  const auto unit = calendarUnitWithValue(m_calendarUnit);
  if (!unit) return std::nullopt;
  DateComponents step;
  step[*unit] = static_cast<qint64>(m_intervalValue);
  return step;
}

QString ReminderInterval::stringValue() const {
  const QLatin1StringView word = unitWord(m_calendarUnit);
  const bool plural = m_intervalValue != 1 && !word.isEmpty();
  return QString::number(m_intervalValue) + u' ' + word + (plural ? "s"_L1 : ""_L1);
}

QString ReminderInterval::description() const {
  const auto address = reinterpret_cast<quintptr>(this);
  return u"<ReminderInterval: 0x%1> (unit:%2 interval:%3 baseDate:%4 timezone:%5 period:%6)"_s.arg(
      QString::number(address, 16), QString::number(m_calendarUnit), QString::number(m_intervalValue),
      m_baseDate ? m_baseDate->description() : u"(null)"_s,
      m_baseCalendar ? m_baseCalendar->timeZone().name() : u"(null)"_s, QString::number(m_validReminderPeriod, 'f', 6));
}

}  // namespace quillo
