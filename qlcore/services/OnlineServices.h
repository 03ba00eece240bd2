#pragma once

#include "qlcore/services/LocationService.h"
#include "qlcore/services/WeatherService.h"

#include <QString>

#include <memory>

namespace quillo {

class Clock;
class UserDefaults;

// The services that need the network and the position. Their libraries are in the module quillo-services, which is
// loaded when one of the two is first used; the program has to export its symbols for it. Both take what the agent's
// own defaults name (QLWeatherManager::standardSettings(), positionProvider()) whenever they are used.

// Keeps answers below `caches`, the user's directory for that. Without the module every question fails. The clock and
// the defaults must outlive the service.
[[nodiscard]] std::unique_ptr<WeatherService> onlineWeather(const Clock& clock, const UserDefaults& ownDefaults,
                                                            QString caches);
// Loads the module. Null without it.
[[nodiscard]] std::unique_ptr<LocationService> onlineLocation(const UserDefaults& ownDefaults);

// The module's functions "quilloMakeWeather" and "quilloMakeLocation".
using MakeWeather = void(const Clock& clock, const UserDefaults& ownDefaults, const QString& caches,
                         std::unique_ptr<WeatherService>& service);
using MakeLocation = void(const UserDefaults& ownDefaults, std::unique_ptr<LocationService>& service);

}  // namespace quillo
