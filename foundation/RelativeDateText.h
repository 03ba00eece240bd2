#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"

#include <QLocale>
#include <QString>

namespace quillo {

// A date and time in the short style of the locale, days near today as words where the locale has them: "Today at
// 21:00". What counts as today is the process's clock's; the reading is the calendar's. Empty for a date that no
// calendar holds.
[[nodiscard]] QString relativeDateText(Date date, const Calendar& calendar, const QLocale& locale = QLocale::system());

}  // namespace quillo
