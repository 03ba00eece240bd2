#include "qlcore/services/QLWeatherFormatter.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "qlcore/services/WeatherConditions.h"

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

QString QLWeatherFormatter::stringForObjectValue(const QLWeather& weather) const {
  if (!weather.isValid()) return {};
  const bool isFahrenheit = m_scale == TemperatureScale::Fahrenheit;
  const double exact = isFahrenheit ? weather.temperature * 9 / 5 + 32 : weather.temperature;
  const long degrees = std::lround(exact);
  const QString sign = degrees < 0 ? QString(QChar(0x2212)) : QString();
  const QString temperature = sign + QString::number(std::abs(degrees)) + (isFahrenheit ? u" °F"_s : u" °C"_s);
  const QString condition = weatherCondition(weather.symbolCode).value_or(weather.text);
  return condition.isEmpty() ? temperature : temperature + u' ' + condition;
}

QLWeatherFormatter weatherFormatterWithPreferredScale(QuilloConfig& config) {
  const PersistentPropertyList* list = config.groupProperties();
  const bool isFahrenheit = list && list->boolForKey(Key::useFahrenheitTempScale);
  return QLWeatherFormatter(isFahrenheit ? TemperatureScale::Fahrenheit : TemperatureScale::Celsius);
}

}  // namespace quillo
