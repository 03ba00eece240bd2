#pragma once

#include "FuzzTarget.h"
#include "foundation/PropertyListSerialization.h"

namespace quillo {

// How many values there are in `value`, shared ones counted each time; stops counting beyond `limit`.
inline qsizetype valuesIn(const PropertyListValue& value, qsizetype limit) {
  qsizetype count = 1;
  for (const auto& item : value.array()) {
    if (count > limit) break;
    count += valuesIn(item, limit - count);
  }
  for (const auto& item : value.dictionary()) {
    if (count > limit) break;
    count += 1 + valuesIn(item, limit - count);
  }
  return count;
}

// What a reader has accepted can be written in `format`, but where a text has characters that XML cannot hold; and what
// was written reads as a list that is written the same. (Not as an equal one: XML keeps dates to the second, and what
// is NaN is never equal.)
inline void requireStableWriting(const PropertyListValue& value, PropertyListFormat format) {
  Error error;
  const auto once = PropertyListSerialization::dataWithPropertyList(value, format, &error);
  if (!once) {
    require(format == PropertyListFormat::XML && !error.localizedDescription.isEmpty(), "what was read can be written");
    return;
  }
  PropertyListFormat seen{};
  const auto again = PropertyListSerialization::propertyListWithData(*once, &seen, &error);
  require(again && seen == format, "what was written can be read");
  require(PropertyListSerialization::dataWithPropertyList(*again, format) == once, "writing twice gives the same");
}

// To be called with what a reader answered, and its error.
inline void requireLawsOfReading(const std::optional<PropertyListValue>& value, const Error& error) {
  if (!value) return require(!error.localizedDescription.isEmpty(), "a refusal has a reason");
  require(!value->isNull(), "no reader makes the null marker");
  (void)value->description();
  // Shared collections can stand for a quarter of a million values, which would only be slow.
  constexpr qsizetype enough = 4096;
  if (valuesIn(*value, enough) > enough) return;
  requireStableWriting(*value, PropertyListFormat::Binary);
  requireStableWriting(*value, PropertyListFormat::XML);
}

}  // namespace quillo
