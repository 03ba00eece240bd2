#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"

#include <QByteArray>

#include <optional>

namespace quillo {

// The three forms of a property list, numbered as the platform numbers them.
enum class PropertyListFormat : quint32 { OpenStep = 1, XML = 100, Binary = 200 };

// Reads and writes property lists. Input is never trusted: nesting is limited, cycles are found, every count and offset
// is checked against the size of the data, shared objects cannot blow up when they are walked, and a list whose values
// would take many times the size of its data is refused.
namespace PropertyListSerialization {

// How deep collections may nest, in reading and in writing.
inline constexpr int maximumDepth = 512;

// The list that `data` holds, and in `format` (when given) the form it had. Nothing on malformed data, with an error of
// the Cocoa domain, code 3840, that names the line (text forms) or the offset (binary).
[[nodiscard]] std::optional<PropertyListValue> propertyListWithData(const QByteArray& data,
                                                                    PropertyListFormat* format = nullptr,
                                                                    Error* error = nullptr);

// `value` in `format`. Nothing, with an error of the Cocoa domain, code 3852, for OpenStep (which can only be read),
// for a value that holds the null marker, and for one nested deeper than maximumDepth.
[[nodiscard]] std::optional<QByteArray> dataWithPropertyList(const PropertyListValue& value, PropertyListFormat format,
                                                             Error* error = nullptr);

}  // namespace PropertyListSerialization
}  // namespace quillo
