#include "journal/model/WritingStreak.h"

#include <algorithm>

namespace quillo {

WritingStreak WritingStreak::of(const QList<QDate>& days, QDate today) {
  WritingStreak streak;
  int run = 0;
  QDate before;
  for (const QDate day : days) {
    // Entries of a clock that was wrong.
    if (!day.isValid() || day > today) break;
    run = before.isValid() && before.addDays(1) == day ? run + 1 : 1;
    ++streak.daysWritten;
    streak.longest = std::max(streak.longest, run);
    before = day;
  }
  if (before.isValid() && before.daysTo(today) <= 1) streak.current = run;
  return streak;
}

}  // namespace quillo
