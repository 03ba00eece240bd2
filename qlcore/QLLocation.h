#pragma once

#include "foundation/PropertyListValue.h"

#include <QString>

#include <optional>

namespace quillo {

// A place: degrees north and east, and a name where one is known.
struct QLLocation {
  double latitude{0};
  double longitude{0};
  QString placeName;

  bool operator==(const QLLocation&) const = default;

  // Whether the coordinates are numbers of this earth.
  [[nodiscard]] bool isValid() const;
  // Only a valid one reads back.
  [[nodiscard]] PropertyListValue toPropertyList() const;
  // Nothing where the coordinates are absent or not valid.
  [[nodiscard]] static std::optional<QLLocation> fromPropertyList(const PropertyListValue& value);
};

}  // namespace quillo
