#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"
#include "foundation/DateComponents.h"

#include <QList>
#include <QString>

#include <optional>

namespace quillo {

class ReminderInterval;

// Part of a day, in minutes since midnight.
struct DailyWindow {
  int from{0};
  int until{0};

  // Ends on the next day: then there is one reminder a day, when it begins. Nobody states such a window here, but it
  // can have been stored.
  [[nodiscard]] bool isOverMidnight() const { return until >= 24 * 60; }
  bool operator==(const DailyWindow&) const = default;
};

// A recurrence as a person states it: every so many units from a first date on and, for hours and minutes, inside a
// part of each day.
struct ReminderRule {
  quint64 count{1};
  CalendarUnit unit{CalendarUnit::Day};
  Date starting;
  // That in which the dates and the times of day are meant.
  Calendar calendar{Calendar::currentCalendar()};
  // Only for hours and minutes; without one they recur around the clock. Ends after it begins.
  std::optional<DailyWindow> window{};

  // What the settings say; nothing where no person could have stated it.
  [[nodiscard]] static std::optional<ReminderRule> ofInterval(const ReminderInterval& interval);

  // As the settings have it, the first date to the minute. Nothing where that is out of the calendar's range.
  [[nodiscard]] std::optional<ReminderInterval> interval() const;

  bool operator==(const ReminderRule&) const = default;
};

// Whether reminders of such a step recur inside a day.
[[nodiscard]] bool isClockStep(quint64 unit);

// "Every 3 hours between 09:00 and 17:00", "Every day at 21:00"; `window` puts the two times into words.
[[nodiscard]] QString reminderInWords(const ReminderInterval& interval,
                                      const QString& window = QStringLiteral(" between %1 and %2"));

// Each the first strictly after the one before it, the first after `after`; fewer than `count` where there are no more.
[[nodiscard]] QList<Date> nextReminders(const ReminderInterval& interval, Date after, int count);

// "09:00".
[[nodiscard]] QString timeOfDayText(int minutesSinceMidnight);

}  // namespace quillo
