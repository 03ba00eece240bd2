#pragma once

#include "qlcore/EntryDetails.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

namespace quillo {

// What a person does to an entry's details, as values.

// At another reading of a clock in the entry's zone; unchanged where no entry can be of that time.
[[nodiscard]] EntryDetails withReading(const EntryDetails& details, QDate day, QTime time);
// In another zone, where the clock reads the same: it was at six in the evening, and that in Tokyo.
[[nodiscard]] EntryDetails withZone(const EntryDetails& details, const QString& zone);
// Without the weather where that is of another place or day now.
[[nodiscard]] EntryDetails withoutStaleWeather(const EntryDetails& before, const EntryDetails& after);
// Whether weather that is looked up now is that of the entry.
[[nodiscard]] bool isOfNow(const EntryDetails& details, Date now);

// What was changed, in one sentence; `text` is the entry's.
[[nodiscard]] QString changeText(const EntryDetails& before, const EntryDetails& after, const QString& text,
                                 const QLocale& locale);

// Tags as they are typed: "evening, long walk", or "#evening #work"; each once, compared without case.
[[nodiscard]] QStringList tagsOfLine(const QString& line);
[[nodiscard]] QString lineOfTags(const QStringList& tags);

// The names of time zones that have `text` in them, those of cities that begin with it first. A space stands for the
// line of "New_York".
[[nodiscard]] QStringList zonesNamed(const QString& text, qsizetype most = 8);

}  // namespace quillo
