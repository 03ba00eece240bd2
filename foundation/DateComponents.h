#pragma once

#include <QtGlobal>

#include <optional>

namespace quillo {

// The units of a calendar, numbered as they are stored in settings; sums of them are masks.
enum class CalendarUnit : quint64 {
  Era = 2,
  Year = 4,
  Month = 8,
  Day = 16,
  Hour = 32,
  Minute = 64,
  Second = 128,
  Week = 256,
  Weekday = 512,
  WeekdayOrdinal = 1024,
  Quarter = 2048,
};

constexpr quint64 operator|(CalendarUnit a, CalendarUnit b) {
  return static_cast<quint64>(a) | static_cast<quint64>(b);
}
constexpr quint64 operator|(quint64 mask, CalendarUnit unit) {
  return mask | static_cast<quint64>(unit);
}

// The unit that `value` numbers; nothing for any other value, a mask for one.
[[nodiscard]] std::optional<CalendarUnit> calendarUnitWithValue(quint64 value);

// A date in parts, each of them optional: the reading of a wall clock and calendar.
struct DateComponents {
  std::optional<qint64> era;
  std::optional<qint64> year;
  std::optional<qint64> month;
  std::optional<qint64> day;
  std::optional<qint64> hour;
  std::optional<qint64> minute;
  std::optional<qint64> second;
  std::optional<qint64> week;            // of the year; weeks begin on Sunday, the first holds 1 January
  std::optional<qint64> weekday;         // 1 is Sunday, 7 is Saturday
  std::optional<qint64> weekdayOrdinal;  // which one of its weekday the day is in its month
  std::optional<qint64> quarter;

  [[nodiscard]] std::optional<qint64>& operator[](CalendarUnit unit);

  bool operator==(const DateComponents&) const = default;
};

}  // namespace quillo
