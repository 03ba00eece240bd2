// What OnlineServices loads: weather and location, with the libraries of the network and the position.

#include "qlcore/services/OnlineServices.h"
#include "qlcore/services/PositionProvider.h"
#include "qlcore/services/QLLocationManager.h"
#include "qlcore/services/QLWeatherManager.h"

namespace quillo {

extern "C" Q_DECL_EXPORT void quilloMakeWeather(const Clock& clock, const UserDefaults& ownDefaults,
                                                const QString& caches, std::unique_ptr<WeatherService>& service) {
  service = std::make_unique<QLWeatherManager>(clock, QLWeatherManager::standardSettings(ownDefaults, caches));
}

extern "C" Q_DECL_EXPORT void quilloMakeLocation(const UserDefaults& ownDefaults,
                                                 std::unique_ptr<LocationService>& service) {
  service = std::make_unique<QLLocationManager>(positionProvider(ownDefaults));
}

}  // namespace quillo
