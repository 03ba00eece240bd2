#pragma once

#include "foundation/Date.h"
#include "qlcore/QLWeather.h"

#include <QByteArray>
#include <QJsonObject>

#include <optional>
#include <vector>

namespace quillo {

// A forecast for one place: the weather at a number of times, at least one.
class WeatherForecast {
 public:
  // From an answer of the weather service, the "compact" JSON form. Nothing when it is not one or has no time with a
  // temperature; times that make no sense are left out.
  [[nodiscard]] static std::optional<WeatherForecast> fromJSON(const QByteArray& json);
  [[nodiscard]] static std::optional<WeatherForecast> fromObject(const QJsonObject& object);
  // The parts that are read, in the same form.
  [[nodiscard]] QJsonObject toObject() const;

  // The weather nearest to `date`; nothing when that is more than `seconds` away.
  [[nodiscard]] std::optional<QLWeather> weatherNearest(Date date, double seconds) const;

 private:
  std::vector<QLWeather> m_times;  // each has a date
};

}  // namespace quillo
