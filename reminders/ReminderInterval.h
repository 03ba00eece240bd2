#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"
#include "foundation/DateComponents.h"
#include "foundation/PropertyListValue.h"

#include <QString>

#include <functional>
#include <optional>

namespace quillo {

// When journal reminders recur: a first date in the time zone in which it was chosen, a step of so many calendar units,
// and for steps of hours and minutes the length of the daily window. Nothing is validated here; what makes no sense
// gives no reminder (see ReminderCalculator).
class ReminderInterval {
 public:
  // Reads the five Reminders... keys. An absent key, like one of the wrong kind, leaves the initial value; the name of
  // an unknown time zone leaves no calendar. The store is anything that answers valueForKey(key).
  template <typename Store>
  [[nodiscard]] static ReminderInterval reminderIntervalFromUserDefaults(const Store& store) {
    return read([&store](const QString& key) { return store.valueForKey(key); });
  }
  [[nodiscard]] static ReminderInterval reminderIntervalFromUserDefaults(const PropertyListDictionary& values);

  // Writes the keys; without a base date or calendar the stored ones stay as they are. The store is anything that
  // takes setObjectForKey(value, key).
  template <typename Store>
  void writeToUserDefaults(Store& store) const {
    write([&store](const PropertyListValue& value, const QString& key) { store.setObjectForKey(value, key); });
  }

  // The unit's value as a calendar numbers it (see CalendarUnit); any number can have been stored.
  [[nodiscard]] quint64 calendarUnit() const { return m_calendarUnit; }
  void setCalendarUnit(quint64 unit) { m_calendarUnit = unit; }
  void setCalendarUnit(CalendarUnit unit) { m_calendarUnit = static_cast<quint64>(unit); }
  // How many units one step is.
  [[nodiscard]] quint64 intervalValue() const { return m_intervalValue; }
  void setIntervalValue(quint64 value) { m_intervalValue = value; }
  // The first reminder and the origin of all steps.
  [[nodiscard]] const std::optional<Date>& baseDate() const { return m_baseDate; }
  void setBaseDate(std::optional<Date> date) { m_baseDate = date; }
  // In the zone in which the base date was chosen.
  [[nodiscard]] const std::optional<Calendar>& baseCalendar() const { return m_baseCalendar; }
  void setBaseCalendar(std::optional<Calendar> calendar) { m_baseCalendar = std::move(calendar); }
  // Seconds from the base date's time of day to the end of the daily window; 0 is the whole day.
  [[nodiscard]] double validReminderPeriod() const { return m_validReminderPeriod; }
  void setValidReminderPeriod(double seconds) { m_validReminderPeriod = seconds; }

  // The date on which a clock in the current time zone shows what the base calendar's showed at the base date. Nothing
  // without a base date or calendar.
  [[nodiscard]] std::optional<Date> baseDateInCurrentTimeZone() const;
  // One step; nothing where the unit is none. Counts from 2^63 on come out negative, the components being signed.
  [[nodiscard]] std::optional<DateComponents> dateComponents() const;
  // "1 day", "3 hours". Units that are not offered to the user have no word; the blank after the number stays, since
  // the main application prints the same text.
  [[nodiscard]] QString stringValue() const;
  // Every value, for the log.
  [[nodiscard]] QString description() const;

 private:
  static ReminderInterval read(const std::function<std::optional<PropertyListValue>(const QString&)>& valueForKey);
  void write(const std::function<void(const PropertyListValue&, const QString&)>& setObjectForKey) const;

  quint64 m_calendarUnit{0};
  quint64 m_intervalValue{0};
  std::optional<Date> m_baseDate;
  std::optional<Calendar> m_baseCalendar;
  double m_validReminderPeriod{0};
};

}  // namespace quillo
