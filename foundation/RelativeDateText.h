#pragma once

#include "foundation/Calendar.h"
#include "foundation/Date.h"

#include <QByteArray>
#include <QString>

namespace quillo {

// The locale that the environment names for dates and times, "de_DE"; else "C".
[[nodiscard]] QByteArray localeOfTimes();

// A date and time in the short style of the locale `style`, in the words of `language`, which is that of the text
// around it; days near today are words where it has some: "Today at 21:00". What counts as today is the process's
// clock's; the reading is the calendar's. Empty for a date that no calendar holds.
[[nodiscard]] QString relativeDateText(Date date, const Calendar& calendar, const QByteArray& style = localeOfTimes(),
                                       const QByteArray& language = "en");

}  // namespace quillo
