#pragma once

#include "foundation/Calendar.h"

#include <QDate>
#include <QString>

#include <optional>

namespace quillo::ctl {

// A date with a zone, or a wall-clock reading in the calendar's; a day alone is its midnight.
[[nodiscard]] std::optional<Date> momentFromText(const QString& text, const Calendar& calendar);

// The same for what happened on a day: a day alone, which may be told in words as well (yesterday, last-tuesday), is
// its noon.
[[nodiscard]] std::optional<Date> momentOfDayFromText(const QString& text, QDate today, const Calendar& calendar);

}  // namespace quillo::ctl
