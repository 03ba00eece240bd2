#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"
#include "qlcore/QLWeather.h"

#include <functional>

namespace quillo {

// Looks up the weather of a place and time.
class WeatherService {
 public:
  using Success = std::function<void(const QLWeather&)>;
  using Failure = std::function<void(const Error&)>;

  virtual ~WeatherService() = default;

  // Degrees north and east. Exactly one of the two is called, once, from the event loop of the main thread and never
  // from inside this call; neither when the service is destroyed before. Either may be empty. What they refer to may
  // be gone by then: capture a QPointer.
  virtual void weatherAtLatitude(double latitude, double longitude, Date date, Success success, Failure failure) = 0;
};

}  // namespace quillo
