#pragma once

#include "foundation/PropertyListValue.h"

#include <QByteArrayView>

#include <optional>

// The texts of a property list's elements as values. Each takes UTF-8 that may have white space around it, and answers
// nothing where the text is no such value.
namespace quillo::PropertyListCoding {

// Decimal or, after "0x", hexadecimal, with a sign; from -2^63 to 2^64 - 1.
[[nodiscard]] std::optional<PropertyListValue> integerFrom(QByteArrayView text);
// Decimal, perhaps with an exponent; or an infinity, or not a number. What no double can hold is infinite or 0.
[[nodiscard]] std::optional<PropertyListValue> realFrom(QByteArrayView text);
// "2014-03-10T20:00:00Z", also before year 1 and with a minus sign; else whatever ISO 8601 with a zone allows.
[[nodiscard]] std::optional<PropertyListValue> dateFrom(QByteArrayView text);
// Base64.
[[nodiscard]] std::optional<PropertyListValue> dataFrom(QByteArrayView text);

}  // namespace quillo::PropertyListCoding
