#include "qlcore/services/WeatherForecast.h"

#include "qlcore/services/WeatherConditions.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestSymbolCode = 64;

// Of the shortest time that the forecast has one for; near the end of a forecast it has none.
QString symbolCode(const QJsonObject& data) {
  for (const QString& period : {u"next_1_hours"_s, u"next_6_hours"_s, u"next_12_hours"_s}) {
    QString code = data[period]["summary"_L1]["symbol_code"_L1].toString();
    if (!code.isEmpty() && code.size() <= longestSymbolCode) return code;
  }
  return {};
}

std::optional<QLWeather> weatherAt(const QJsonObject& time) {
  const auto date = Date::fromISO8601(time["time"_L1].toString());
  const QJsonObject data = time["data"_L1].toObject();
  const QJsonValue temperature = data["instant"_L1]["details"_L1]["air_temperature"_L1];
  if (!date || !temperature.isDouble()) return std::nullopt;
  const QString code = symbolCode(data);
  QLWeather weather{temperature.toDouble(), code, weatherCondition(code).value_or(QString()), date, u"MET Norway"_s};
  return weather.isValid() ? std::optional(std::move(weather)) : std::nullopt;
}

}  // namespace

std::optional<WeatherForecast> WeatherForecast::fromJSON(const QByteArray& json) {
  // The parser refuses what is nested more than 1024 deep.
  return fromObject(QJsonDocument::fromJson(json).object());
}

std::optional<WeatherForecast> WeatherForecast::fromObject(const QJsonObject& object) {
  const QJsonObject properties = object["properties"_L1].toObject();
  WeatherForecast forecast;
  for (const QJsonValueConstRef time : properties["timeseries"_L1].toArray())
    if (auto weather = weatherAt(time.toObject())) forecast.m_times.push_back(std::move(*weather));
  return forecast.m_times.empty() ? std::nullopt : std::optional(std::move(forecast));
}

QJsonObject WeatherForecast::toObject() const {
  QJsonArray times;
  for (const QLWeather& weather : m_times) {
    const QJsonObject details{{u"air_temperature"_s, weather.temperature}};
    const QJsonObject summary{{u"symbol_code"_s, weather.symbolCode}};
    const QJsonObject data{{u"instant"_s, QJsonObject{{u"details"_s, details}}},
                           {u"next_1_hours"_s, QJsonObject{{u"summary"_s, summary}}}};
    times.append(QJsonObject{{u"time"_s, weather.date->toISO8601()}, {u"data"_s, data}});
  }
  return {{u"properties"_s, QJsonObject{{u"timeseries"_s, times}}}};
}

std::optional<QLWeather> WeatherForecast::weatherNearest(Date date, double seconds) const {
  const auto away = [date](const QLWeather& weather) { return std::abs(weather.date->timeIntervalSince(date)); };
  const auto nearest = std::ranges::min_element(m_times, {}, away);
  // False for a date that is NaN, too.
  return away(*nearest) <= seconds ? std::optional(*nearest) : std::nullopt;
}

}  // namespace quillo
