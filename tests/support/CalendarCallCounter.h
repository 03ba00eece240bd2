#pragma once

namespace quillo {

// What a calculation asks of the calendar, counted by the linker's wrapping of the functions below: a program that
// links this library counts, and the product's own code knows nothing of it. One thread only.
struct CalendarCalls {
  // Of Calendar, made from outside of it.
  int calendar{0};
  // In the zone's rules: every reading, placing and trying of a date inside the calendar makes one at least.
  int zone{0};

  bool operator==(const CalendarCalls&) const = default;
};

// Since the last call of this function.
[[nodiscard]] CalendarCalls takeCalendarCalls();

}  // namespace quillo
