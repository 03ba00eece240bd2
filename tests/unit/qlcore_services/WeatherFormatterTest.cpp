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

// The codes by their rule: a condition is made of how much, what, in showers or not, with thunder or not. Only showers
// and the sky know day and night, and the service misspells two.
TEST(WeatherConditions, KnowsEveryCodeOfTheService) {
  QStringList codes{u"cloudy"_s, u"fog"_s};
  const QStringList lights{u"_day"_s, u"_night"_s, u"_polartwilight"_s};
  for (const QString& sky : {u"clearsky"_s, u"fair"_s, u"partlycloudy"_s})
    for (const QString& light : lights) codes << sky + light;
  for (const QString& amount : {u"light"_s, u""_s, u"heavy"_s})
    for (const QString& what : {u"rain"_s, u"sleet"_s, u"snow"_s})
      for (const QString& thunder : {u""_s, u"andthunder"_s}) {
        codes << amount + what + thunder;
        const bool misspelt = amount == u"light" && what != u"rain" && !thunder.isEmpty();
        for (const QString& light : lights)
          codes << amount + (misspelt ? u"s"_s : QString()) + what + u"showers"_s + thunder + light;
      }
  ASSERT_EQ(codes.size(), 2 + 9 + 18 * 4);
  for (const QString& code : codes) {
    const auto words = weatherCondition(code);
    ASSERT_TRUE(words) << code.toStdString();
    // The words are the code's.
    QString joined = words->toLower().remove(u' ');
    QString base = code.section(u'_', 0, 0);
    EXPECT_EQ(joined, base.replace(u"lightss"_s, u"lights"_s)) << code.toStdString();
  }
  for (const QString& none :
       {QString(), u"_"_s, u"_day"_s, u"rain_day"_s, u"fair_dusk"_s, u"fair_day_night"_s, u"Fog"_s, u"fogg"_s, u"fo"_s})
    EXPECT_FALSE(weatherCondition(none)) << none.toStdString();
}

}  // namespace
