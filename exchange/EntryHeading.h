#pragma once

#include "qlcore/index/IndexedEntry.h"

#include <QDateTime>
#include <QString>

namespace quillo {

// What is told of an entry above its text, for people.
namespace EntryHeading {

// What a clock showed, with its distance from UTC in whole minutes: zones had seconds once, and no format writes them.
[[nodiscard]] QDateTime clockTime(Date date, const QString& timeZone);
// "2014-03-10T21:00:00+01:00"; in UTC where the year would not have four digits.
[[nodiscard]] QString isoTime(Date date, const QString& timeZone);

// "Monday, 10 March 2014".
[[nodiscard]] QString day(const QDateTime& time);
// "March 2014".
[[nodiscard]] QString month(QDate day);

// "Bergen", else the coordinates; empty where there is no place.
[[nodiscard]] QString place(const IndexedEntry& entry);
// "7.4 °C, light rain"; empty where there is no weather.
[[nodiscard]] QString weather(const IndexedEntry& entry);

// As short as it can be without becoming another number.
[[nodiscard]] QString number(double value);

}  // namespace EntryHeading
}  // namespace quillo
