#include "tests/support/CalendarCallCounter.h"

#include "foundation/Calendar.h"

#include <utility>

namespace quillo {

namespace {

CalendarCalls& calls() {
  static CalendarCalls counted;
  return counted;
}

}  // namespace

CalendarCalls takeCalendarCalls() {
  return std::exchange(calls(), {});
}

// A member function is called as a plain one whose first argument is the object. The names are those of CMakeLists.txt:
// where one changes, nothing is counted any more, which the tests that count see.
#define QUILLO_REAL(name) __asm__("__real_" name)
#define QUILLO_WRAP(name) __asm__("__wrap_" name)

#define QUILLO_COUNT(counter, result, function, name, parameters, arguments) \
  result real_##function parameters QUILLO_REAL(name);                       \
  result wrap_##function parameters QUILLO_WRAP(name);                       \
  result wrap_##function parameters {                                        \
    ++calls().counter;                                                       \
    return real_##function arguments;                                        \
  }

QUILLO_COUNT(calendar, std::optional<DateComponents>, componentsFromDate,
             "_ZNK6quillo8Calendar18componentsFromDateEyNS_4DateE", (const Calendar* self, quint64 mask, Date date),
             (self, mask, date))
QUILLO_COUNT(calendar, std::optional<Date>, dateFromComponents,
             "_ZNK6quillo8Calendar18dateFromComponentsERKNS_14DateComponentsE",
             (const Calendar* self, const DateComponents& components), (self, components))
QUILLO_COUNT(calendar, std::optional<Date>, dateByAdding,
             "_ZNK6quillo8Calendar12dateByAddingExNS_12CalendarUnitENS_4DateE",
             (const Calendar* self, qint64 count, CalendarUnit unit, Date date), (self, count, unit, date))
QUILLO_COUNT(calendar, std::optional<qint64>, wholeUnitsBetween,
             "_ZNK6quillo8Calendar17wholeUnitsBetweenENS_4DateES1_NS_12CalendarUnitE",
             (const Calendar* self, Date from, Date to, CalendarUnit unit), (self, from, to, unit))
QUILLO_COUNT(zone, int, secondsFromUTC, "_ZNK6quillo8TimeZone14secondsFromUTCEx",
             (const TimeZone* self, qint64 instant), (self, instant))
QUILLO_COUNT(zone, qint64, instantOfReading, "_ZNK6quillo8TimeZone16instantOfReadingEx",
             (const TimeZone* self, qint64 reading), (self, reading))

}  // namespace quillo
