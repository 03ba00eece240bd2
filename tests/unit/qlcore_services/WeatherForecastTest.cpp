#include "WeatherServer.h"
#include "qlcore/services/WeatherForecast.h"

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

}  // namespace
