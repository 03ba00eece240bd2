#pragma once

#include <QDate>
#include <QList>

namespace quillo {

// How regularly somebody writes.
struct WritingStreak {
  int daysWritten{0};
  int current{0};  // days in a row up to today, or to yesterday while today has no entry yet
  int longest{0};

  // `days` with entries in ascending order, each once.
  [[nodiscard]] static WritingStreak of(const QList<QDate>& days, QDate today);

  bool operator==(const WritingStreak&) const = default;
};

}  // namespace quillo
