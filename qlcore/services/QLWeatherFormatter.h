#pragma once

#include "qlcore/QLWeather.h"

#include <QString>

namespace quillo {

class QuilloConfig;

enum class TemperatureScale : int { Celsius = 0, Fahrenheit = 1 };

// Says what the weather is: "18 °C Partly cloudy".
class QLWeatherFormatter {
 public:
  explicit QLWeatherFormatter(TemperatureScale scale) : m_scale(scale) {}

  // Whole degrees, halves rounded away from zero after the conversion, and never "-0"; a negative one has a true minus
  // sign (U+2212). Then the condition in words: by the weather's symbol code; by its own text where the code is unknown
  // or absent; nothing without either. Empty when the temperature is none that air can have.
  [[nodiscard]] QString stringForObjectValue(const QLWeather& weather) const;

 private:
  TemperatureScale m_scale;
};

// In Fahrenheit when Key::useFahrenheitTempScale is set in the shared list, else (also while the list cannot be read)
// in Celsius. As the setting is now: ask again for every text.
[[nodiscard]] QLWeatherFormatter weatherFormatterWithPreferredScale(QuilloConfig& config);

}  // namespace quillo
