#pragma once

#include "foundation/PropertyListValue.h"

#include <QString>

#include <optional>

namespace quillo {

// `text` with U+FFFD in the place of every character that an entry file cannot hold: control characters but for tab,
// line feed and carriage return, halves of a surrogate pair, U+FFFE and U+FFFF.
[[nodiscard]] QString storableText(QString text);

// To the second, as an entry file has dates, so that what was written reads back equal.
[[nodiscard]] Date toWholeSecond(Date date);
[[nodiscard]] Date storableNow();

// The date that `value` is, unless an entry file cannot hold it: NaN, or outside the years 1 to 9999.
[[nodiscard]] std::optional<Date> storableDate(const PropertyListValue& value);

}  // namespace quillo
