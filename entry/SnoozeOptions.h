#pragma once

#include <QPointF>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace quillo {

// What the snooze row offers under a reminder that recurs by some calendar unit.
struct SnoozeOptions {
  struct Option {
    QString title;
    int tag;  // seconds to snooze

    bool operator==(const Option&) const = default;
  };

  QPointF titleOrigin;  // in the row, from its bottom left, in points
  std::optional<Option> option1;
  Option option2;
};

// `calendarUnit` as a calendar numbers it (see CalendarUnit); any number can have been stored.
[[nodiscard]] SnoozeOptions snoozeOptions(quint64 calendarUnit);

}  // namespace quillo
