#pragma once

#include "foundation/Error.h"

namespace quillo::WeatherError {

inline constexpr QLatin1StringView domain{"QLWeatherErrorDomain"};

enum Code : qint64 {
  InvalidPlace = 1,  // the coordinates are none
  NotReachable = 2,  // no connection, no answer in time, broken off
  Refused = 3,       // the service answered that it will not, or redirected to where nobody is to listen
  TooMany = 4,       // asked too often, or it is to be left alone: nothing is sent until the time it gave
  BadAnswer = 5,     // not a forecast, or too large
  NoForecast = 6,    // a forecast, but not for that time
};

[[nodiscard]] inline Error make(Code code, const QString& description) {
  return {domain, code, description, {}, {}};
}

}  // namespace quillo::WeatherError
