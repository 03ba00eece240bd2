#include "WeatherServer.h"
#include "qlcore/services/QLWeatherFormatter.h"
#include "qlcore/services/WeatherConditions.h"
#include "qlcore/services/WeatherForecast.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <limits>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// As the service writes it: fewer and fewer periods towards the end.
const QByteArray answer = R"({"type":"Feature","geometry":{"type":"Point","coordinates":[10.75,59.91,3]},"properties":{
  "meta":{"updated_at":"2026-11-25T11:45:07Z","units":{"air_temperature":"celsius"}},"timeseries":[
  {"time":"2026-11-25T12:00:00Z","data":{"instant":{"details":{"air_temperature":1.5,"wind_speed":3}},
   "next_12_hours":{"summary":{"symbol_code":"cloudy"}},"next_1_hours":{"summary":{"symbol_code":"fog"}},
   "next_6_hours":{"summary":{"symbol_code":"rain"}}}},
  {"time":"2026-11-25T13:00:00Z","data":{"instant":{"details":{"air_temperature":2}},
   "next_12_hours":{"summary":{"symbol_code":"cloudy"}},"next_6_hours":{"summary":{"symbol_code":"rain"}}}},
  {"time":"2026-11-25T18:00:00Z","data":{"instant":{"details":{"air_temperature":-3}},
   "next_12_hours":{"summary":{"symbol_code":"cloudy"}}}},
  {"time":"2026-11-26T00:00:00Z","data":{"instant":{"details":{"air_temperature":-4}}}}]}})";

Date at(const QString& time) {
  return *Date::fromISO8601(u"2026-11-%1Z"_s.arg(time));
}

TEST(AForecast, GivesTheWeatherNearestInTime) {
  const auto forecast = WeatherForecast::fromJSON(answer);
  ASSERT_TRUE(forecast);
  const struct {
    QString time;
    double temperature;
    QString symbolCode;
    QString text;
  } rows[] = {
      {u"25T06:00:00"_s, 1.5, u"fog"_s, u"Fog"_s},      {u"25T12:00:00"_s, 1.5, u"fog"_s, u"Fog"_s},
      {u"25T12:29:59"_s, 1.5, u"fog"_s, u"Fog"_s},      {u"25T12:30:01"_s, 2, u"rain"_s, u"Rain"_s},
      {u"25T15:31:00"_s, -3, u"cloudy"_s, u"Cloudy"_s}, {u"26T06:00:00"_s, -4, QString(), QString()},
  };
  for (const auto& row : rows) {
    const auto weather = forecast->weatherNearest(at(row.time), 6 * 3600);
    ASSERT_TRUE(weather) << row.time.toStdString();
    EXPECT_EQ(weather->temperature, row.temperature) << row.time.toStdString();
    EXPECT_EQ(weather->symbolCode, row.symbolCode);
    EXPECT_EQ(weather->text, row.text);
  }
  EXPECT_EQ(forecast->weatherNearest(at(u"25T12:10:00"_s), 3600)->date, at(u"25T12:00:00"_s));
  EXPECT_FALSE(forecast->weatherNearest(at(u"25T05:59:59"_s), 6 * 3600));
  EXPECT_FALSE(forecast->weatherNearest(Date(std::numeric_limits<double>::quiet_NaN()), 6 * 3600));
}

TEST(AForecast, LeavesOutTimesThatMakeNoSense) {
  const QByteArray good = forecast("2026-11-25T12:00:00Z", "5", "fog");
  const QByteArray head = R"({"properties":{"timeseries":[)";
  const QByteArray time = good.sliced(good.indexOf("{\"time\"")).chopped(3);
  ASSERT_TRUE(WeatherForecast::fromJSON(head + time + "]}}"));
  for (const QByteArray& bad :
       {QByteArray("1"), QByteArray("null"), QByteArray("[]"), QByteArray("{}"),
        QByteArray(time).replace("2026-11-25T12:00:00Z", "yesterday"), QByteArray(time).replace(":5}", ":\"5\"}"),
        QByteArray(time).replace(":5}", ":1e308}"), QByteArray(time).replace(":5}", ":null}"),
        QByteArray(time).replace("instant", "moment")}) {
    EXPECT_FALSE(WeatherForecast::fromJSON(head + bad + "]}}")) << bad.toStdString();
    const auto both = WeatherForecast::fromJSON(head + bad + ',' + time + "]}}");
    ASSERT_TRUE(both) << bad.toStdString();
    EXPECT_EQ(both->weatherNearest(at(u"25T12:00:00"_s), 60)->temperature, 5);
  }
  const auto odd = WeatherForecast::fromJSON(forecast("2026-11-25T12:00:00Z", "5", QByteArray(5000, 'x')));
  EXPECT_EQ(odd->weatherNearest(at(u"25T12:00:00"_s), 60)->symbolCode, QString());
}

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
