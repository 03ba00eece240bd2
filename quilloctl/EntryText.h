#pragma once

#include "qlcore/index/IndexedEntry.h"

#include <QJsonObject>
#include <QString>

namespace quillo {
class QLJournalEntryFile;
}

namespace quillo::ctl {

// An entry as it is shown, from its file; nothing of its text stands out.
[[nodiscard]] IndexedEntry shownEntry(const QLJournalEntryFile& entry);

// Dates in UTC.
[[nodiscard]] QJsonObject json(const IndexedEntry& entry);
// The same, with what matched: where its words are in the text, in UTF-16 units, and the part around them.
[[nodiscard]] QJsonObject jsonWithMatches(const IndexedEntry& entry);

// One line: what it is found by, when it was written, how it begins. The time is as a clock showed it where the entry
// was written.
void printLine(const IndexedEntry& entry);
// Two lines: the second is the part of the text around what matched.
void printFound(const IndexedEntry& entry);
// All of it under a line with its properties, the text indented.
void printIndented(const IndexedEntry& entry);
// All of it, each property in a line of its own, and the text to the letter.
void printWhole(const IndexedEntry& entry);

}  // namespace quillo::ctl
