#pragma once

#include <QDate>
#include <QString>

#include <optional>

namespace quillo {

// The days from `first` to `last`, both included.
struct DaySpan {
  QDate first;
  QDate last;

  bool operator==(const DaySpan&) const = default;
};

// The days that a person means by `words`: a day (2025-03-10), a month (2025-03), a year (2025), today, yesterday, a
// weekday (the latest one, today included; with "last" before it not today), this or last week, month or year (weeks
// begin on Monday), a number of days, weeks, months or years ago. Case and the number of spaces do not matter, and -
// and _ stand for spaces between words. Nothing for anything else, and for days outside the years 1 to 9999.
[[nodiscard]] std::optional<DaySpan> daysMeant(const QString& words, QDate today);

}  // namespace quillo
