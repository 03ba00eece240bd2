#pragma once

#include "foundation/PropertyListValue.h"

#include <QJsonValue>

namespace quillo {

// For people and scripts to read: dates as ISO 8601 in UTC, data as base64, integers beyond 64 bits with a sign as
// decimal text, and numbers that JSON cannot write ("nan") as text.
[[nodiscard]] QJsonValue jsonFromPropertyList(const PropertyListValue& value);

// JSON's null is the null marker. Numbers without a fraction become integers.
[[nodiscard]] PropertyListValue propertyListFromJson(const QJsonValue& value);

}  // namespace quillo
