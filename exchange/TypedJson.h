#pragma once

#include "foundation/PropertyListValue.h"

#include <QJsonValue>

#include <optional>

namespace quillo {

// Any value of a property list as JSON from which it comes back in its own kind: what JSON has no kind for is an object
// of one key, {"$date": "2014-03-10T20:00:00Z"}, {"$data": BASE64}, {"$real": 1} or "nan", {"$integer":
// "18446744073709551615"}; a dictionary that looks like one is {"$dictionary": {...}}.
[[nodiscard]] QJsonValue typedJson(const PropertyListValue& value);
// Nothing where an object of one key that begins with "$" is none of these, and for null, which no list holds.
[[nodiscard]] std::optional<PropertyListValue> valueOfTypedJson(const QJsonValue& json);

}  // namespace quillo
