#include "qlcore/QLLocation.h"

#include "qlcore/StorableValues.h"

namespace quillo {

static constexpr QLatin1StringView latitudeKey{"latitude"};
static constexpr QLatin1StringView longitudeKey{"longitude"};
static constexpr QLatin1StringView placeNameKey{"placeName"};

bool QLLocation::isValid() const {
  // False for NaN, too.
  return latitude >= -90 && latitude <= 90 && longitude >= -180 && longitude <= 180;
}

PropertyListValue QLLocation::toPropertyList() const {
  PropertyListDictionary fields{{latitudeKey, latitude}, {longitudeKey, longitude}};
  if (!placeName.isEmpty()) fields.insert(placeNameKey, storableText(placeName));
  return fields;
}

std::optional<QLLocation> QLLocation::fromPropertyList(const PropertyListValue& value) {
  const auto& fields = value.dictionary();
  const PropertyListValue latitude = fields.value(latitudeKey);
  const PropertyListValue longitude = fields.value(longitudeKey);
  if (!latitude.isNumber() || !longitude.isNumber()) return std::nullopt;
  const QLLocation location{latitude.doubleValue(), longitude.doubleValue(), fields.value(placeNameKey).string()};
  return location.isValid() ? std::optional(location) : std::nullopt;
}

}  // namespace quillo
