#include "FuzzTarget.h"
#include "qlcore/services/WeatherForecast.h"

#include <limits>

using namespace quillo;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto forecast = WeatherForecast::fromJSON(inputBytes(data, size));
  if (!forecast) return 0;
  for (const double instant : {0.0, 817'300'800.0, -1e300, 1e300}) {
    const auto weather = forecast->weatherNearest(Date(instant), std::numeric_limits<double>::infinity());
    require(weather && weather->isValid(), "a forecast has a weather that makes sense");
    require(QLWeather::fromPropertyList(weather->toPropertyList()).has_value(), "an entry can keep the weather");
  }
  return 0;
}
