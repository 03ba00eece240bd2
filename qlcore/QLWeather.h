#pragma once

#include "foundation/Date.h"
#include "foundation/PropertyListValue.h"

#include <QString>

#include <optional>

namespace quillo {

// The weather at a place and time.
struct QLWeather {
  double temperature{0};     // degrees Celsius
  QString symbolCode;        // the weather service's code for the condition, "partlycloudy_day"
  QString text;              // the condition in words; may be empty
  std::optional<Date> date;  // when it was so
  QString provider;          // whose observation it is

  bool operator==(const QLWeather&) const = default;

  // Whether the temperature is a number that air on earth can have.
  [[nodiscard]] bool isValid() const;
  // Only a valid one reads back.
  [[nodiscard]] PropertyListValue toPropertyList() const;
  // Nothing where the temperature is absent or not valid; a date that is none reads as absent.
  [[nodiscard]] static std::optional<QLWeather> fromPropertyList(const PropertyListValue& value);
};

}  // namespace quillo
