#include "qlcore/services/QLWeatherFormatter.h"
#include "qlcore/services/WeatherConditions.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <limits>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

QString text(double celsius, const QString& symbolCode = {}, const QString& words = {},
             TemperatureScale scale = TemperatureScale::Celsius) {
  return QLWeatherFormatter(scale).stringForObjectValue({celsius, symbolCode, words, {}, {}});
}

TEST(WeatherFormatter, RoundsToWholeDegrees) {
  const struct {
    double celsius;
    QString inCelsius;
    QString inFahrenheit;
  } rows[] = {
      {18, u"18 °C"_s, u"64 °F"_s},    {17.5, u"18 °C"_s, u"64 °F"_s},  // 63.5
      {17.49, u"17 °C"_s, u"63 °F"_s}, {0, u"0 °C"_s, u"32 °F"_s},       {-0.4, u"0 °C"_s, u"31 °F"_s},
      {-0.5, u"−1 °C"_s, u"31 °F"_s},  {-12.5, u"−13 °C"_s, u"10 °F"_s},  // 9.5
      {-17.9, u"−18 °C"_s, u"0 °F"_s},                                    // −0.22
      {-40, u"−40 °C"_s, u"−40 °F"_s}, {56.7, u"57 °C"_s, u"134 °F"_s},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(text(row.celsius), row.inCelsius);
    EXPECT_EQ(text(row.celsius, {}, {}, TemperatureScale::Fahrenheit), row.inFahrenheit);
  }
  for (const double none : {1000.0, std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()})
    EXPECT_EQ(text(none, u"fog"_s), QString());
}

TEST(WeatherFormatter, SaysTheCondition) {
  EXPECT_EQ(text(18, u"partlycloudy_day"_s), u"18 °C Partly cloudy"_s);
  EXPECT_EQ(text(18, u"partlycloudy_day"_s, u"Other"_s), u"18 °C Partly cloudy"_s);
  EXPECT_EQ(text(18, u"tornado"_s, u"Tornado"_s), u"18 °C Tornado"_s);
  EXPECT_EQ(text(18, {}, u"Föhn"_s), u"18 °C Föhn"_s);
  EXPECT_EQ(text(18, u"tornado"_s), u"18 °C"_s);
}

TEST(WeatherConditions, AreNamedInTheFormsThatTheServiceHas) {
  const struct {
    QString code, words;
  } rows[] = {
      {u"cloudy"_s, u"Cloudy"_s},
      {u"clearsky_day"_s, u"Clear sky"_s},
      {u"fair_polartwilight"_s, u"Fair"_s},
      {u"heavysleetandthunder"_s, u"Heavy sleet and thunder"_s},
      {u"rainshowersandthunder_night"_s, u"Rain showers and thunder"_s},
      // The service misspells two.
      {u"lightssleetshowersandthunder_day"_s, u"Light sleet showers and thunder"_s},
  };
  for (const auto& row : rows) EXPECT_EQ(weatherCondition(row.code), row.words) << row.code.toStdString();
  for (const QString& none :
       {QString(), u"_"_s, u"_day"_s, u"rain_day"_s, u"fair_dusk"_s, u"fair_day_night"_s, u"Fog"_s, u"fogg"_s, u"fo"_s})
    EXPECT_FALSE(weatherCondition(none)) << none.toStdString();
}

}  // namespace
