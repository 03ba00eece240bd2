#include "reminders/DateComponentsQLAdditions.h"

namespace quillo::QLAdditions {

using namespace Qt::StringLiterals;

std::optional<QLatin1StringView> keyForCalendarUnit(quint64 unit) {
  const auto known = calendarUnitWithValue(unit);
  if (!known) return std::nullopt;
  switch (*known) {
    case CalendarUnit::Era:
      return "era"_L1;
    case CalendarUnit::Year:
      return "year"_L1;
    case CalendarUnit::Month:
      return "month"_L1;
    case CalendarUnit::Day:
      return "day"_L1;
    case CalendarUnit::Hour:
      return "hour"_L1;
    case CalendarUnit::Minute:
      return "minute"_L1;
    case CalendarUnit::Second:
      return "second"_L1;
    case CalendarUnit::Week:
      return "week"_L1;
    case CalendarUnit::Weekday:
      return "weekday"_L1;
    case CalendarUnit::WeekdayOrdinal:
      return "weekdayOrdinal"_L1;
    case CalendarUnit::Quarter:
      return "quarter"_L1;
  }
  return std::nullopt;
}

}  // namespace quillo::QLAdditions
