#include "qlcore/QLWeather.h"

#include "qlcore/StorableValues.h"

namespace quillo {

static constexpr QLatin1StringView temperatureKey{"temperature"};
static constexpr QLatin1StringView symbolCodeKey{"symbolCode"};
static constexpr QLatin1StringView textKey{"text"};
static constexpr QLatin1StringView dateKey{"date"};
static constexpr QLatin1StringView providerKey{"provider"};

bool QLWeather::isValid() const {
  // False for NaN, too.
  return temperature >= -150 && temperature <= 150;
}

PropertyListValue QLWeather::toPropertyList() const {
  PropertyListDictionary fields{{temperatureKey, temperature}};
  const auto insertText = [&fields](QLatin1StringView key, const QString& value) {
    if (!value.isEmpty()) fields.insert(key, storableText(value));
  };
  insertText(symbolCodeKey, symbolCode);
  insertText(textKey, text);
  insertText(providerKey, provider);
  if (date && storableDate(*date)) fields.insert(dateKey, *date);
  return fields;
}

std::optional<QLWeather> QLWeather::fromPropertyList(const PropertyListValue& value) {
  const auto& fields = value.dictionary();
  const PropertyListValue temperature = fields.value(temperatureKey);
  if (!temperature.isNumber()) return std::nullopt;
  const QLWeather weather{temperature.doubleValue(), fields.value(symbolCodeKey).string(),
                          fields.value(textKey).string(), storableDate(fields.value(dateKey)),
                          fields.value(providerKey).string()};
  return weather.isValid() ? std::optional(weather) : std::nullopt;
}

}  // namespace quillo
