#pragma once

#include "reminders/ReminderRule.h"

#include <QString>

#include <optional>

namespace quillo::ctl {

struct ReminderStep {
  quint64 count;
  CalendarUnit unit;
};
// "3 hours", "day", "1 week".
[[nodiscard]] std::optional<ReminderStep> stepFromText(const QString& text);
// What is said of a text that is none.
[[nodiscard]] QString notAStep(const QString& text);

// "9:00" or "21:30" as minutes since midnight.
[[nodiscard]] std::optional<int> timeOfDayFromText(const QString& text);

// A whole rule in words, as help shows them: "every day at 21:00", "every 3 hours", "every 3 hours from 09:00 to
// 17:00". It begins on the day of `now`. Nothing, with the reason, for what is none.
[[nodiscard]] std::optional<ReminderRule> ruleFromText(const QString& text, Date now, QString* reason);

}  // namespace quillo::ctl
