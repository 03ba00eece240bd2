#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"

#include <optional>

namespace quillo {

class ReminderInterval;

// When is the first reminder strictly after a moment? A pure function of its arguments, of a few additions however old
// the base date and however small the step is.
//
// Steps of hours and minutes repeat inside a daily window that begins at the base date's time of day. Steps of every
// other unit repeat from the base date for ever, each counted from the base date itself: a 31st becomes the last day of
// a short month and the 31st again in the next long one. A base date in the future is the first reminder, whatever the
// interval. All readings of the base date are taken in its own calendar and placed in `calendar`, so a reminder keeps
// its local time when the user changes the time zone.
class ReminderCalculator {
 public:
  ReminderCalculator() = delete;

  // After now, in the current calendar.
  [[nodiscard]] static std::optional<Date> firstReminderForInterval(const ReminderInterval& interval);

  // Without a date after now, without a calendar in the current one. Nothing, with a line in the log, when there is no
  // reminder: no base date or calendar, a zero interval, an unknown unit, or a step that does not lead to a later date
  // inside the calendar.
  [[nodiscard]] static std::optional<Date> firstReminderForInterval(const ReminderInterval& interval,
                                                                    std::optional<Date> afterDate,
                                                                    const std::optional<Calendar>& calendar);
};

}  // namespace quillo
