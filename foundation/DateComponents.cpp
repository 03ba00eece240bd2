#include "foundation/DateComponents.h"

namespace quillo {

std::optional<CalendarUnit> calendarUnitWithValue(quint64 value) {
  const bool oneBit = value != 0 && (value & (value - 1)) == 0;
  if (!oneBit || value < static_cast<quint64>(CalendarUnit::Era) || value > static_cast<quint64>(CalendarUnit::Quarter))
    return std::nullopt;
  return static_cast<CalendarUnit>(value);
}

std::optional<qint64>& DateComponents::operator[](CalendarUnit unit) {
  switch (unit) {
    case CalendarUnit::Era:
      return era;
    case CalendarUnit::Year:
      return year;
    case CalendarUnit::Month:
      return month;
    case CalendarUnit::Day:
      return day;
    case CalendarUnit::Hour:
      return hour;
    case CalendarUnit::Minute:
      return minute;
    case CalendarUnit::Second:
      return second;
    case CalendarUnit::Week:
      return week;
    case CalendarUnit::Weekday:
      return weekday;
    case CalendarUnit::WeekdayOrdinal:
      return weekdayOrdinal;
    case CalendarUnit::Quarter:
      return quarter;
  }
  return era;  // not reached: units are made by calendarUnitWithValue()
}

}  // namespace quillo
