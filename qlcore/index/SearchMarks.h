#pragma once

#include <QDate>
#include <QString>

namespace quillo::SearchMarks {

// Words that no text can hold, since they begin with a character for private use: what else an entry is found by.

// Every entry has it: what "all but" is taken from.
[[nodiscard]] QString everyEntry();
// A tag as a whole.
[[nodiscard]] QString tag(const QString& name);
// Some word begins with this letter, which may be half of a pair. Finding all words that begin with a letter would take
// long in a large journal.
[[nodiscard]] QString initial(char32_t letter);
// Some word begins with this, one of CommonPrefixes.
[[nodiscard]] QString prefix(const QString& prefix);
// The day of the year, 310 for 10 March.
[[nodiscard]] QString dayOfYear(QDate day);
[[nodiscard]] QString year(QDate day);

}  // namespace quillo::SearchMarks
