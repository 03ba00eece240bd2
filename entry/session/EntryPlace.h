#pragma once

#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"
#include "qlcore/services/LocationService.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class QuilloConfig;
class WeatherService;

// What finds place and weather; it must outlive its users. A null service, or no maker, is a desktop that lacks it.
struct EntryPlaceServices {
  QuilloConfig& config;
  // Called once, when a place is first wanted.
  std::function<std::unique_ptr<LocationService>()> makeLocationManager{};
  WeatherService* weather{nullptr};
};

// Where an entry is written, and in what weather: the search for both, what was found, and the line that says it.
// Main thread only.
class EntryPlace : public QObject {
  Q_OBJECT

 public:
  explicit EntryPlace(EntryPlaceServices services);

  // Null where it is not known.
  [[nodiscard]] const std::shared_ptr<const QLLocation>& location() const { return m_location; }
  [[nodiscard]] std::optional<QLLocation> place() const {
    return m_location ? std::optional(*m_location) : std::nullopt;
  }
  [[nodiscard]] const std::optional<QLWeather>& weather() const { return m_weather; }
  // The very place that is there already changes nothing; the same weather is told of anew.
  void setLocation(std::shared_ptr<const QLLocation> location);
  void setWeather(const std::optional<QLWeather>& weather);

  // Whether the settings want a place for every new entry.
  [[nodiscard]] bool isAutomatic() const;

  // An answer about the weather that comes while it is not wanted is dropped. It is not at first.
  void setIsWanted(bool isWanted) { m_isWanted = isWanted; }

  // Whether the service that searches is there already.
  [[nodiscard]] bool hasLocationManager() const { return m_locationManager != nullptr; }
  // Starts a search for the place, and then its weather, unless one is on or the desktop does not allow it.
  void fetchLocationAndWeatherIfNeeded();
  // Asks for the weather where the entry is written. A failure leaves it as it is.
  void updateWeatherFromLocation();
  void stopLocating();
  // Forgets place and weather, and whatever was asked about them: another entry is to be written.
  void forget();

  // "Berlin, Germany  •  18 °C Partly cloudy", or what is known of it; the temperature in the scale of the settings.
  [[nodiscard]] QString metadataText() const;

 Q_SIGNALS:
  // What metadataText() answers may have changed.
  void metadataDidChange();
  // True where a search begins, false at each of its fixes and where it is stopped.
  void awaitsPlaceDidChange(bool awaits);

 private:
  // Made on first use; null where there is none to make.
  [[nodiscard]] LocationService* locationManager();
  void locationFound(const std::shared_ptr<const QLLocation>& location, bool isFinal, bool& weatherIsRequested);

  EntryPlaceServices m_services;
  std::unique_ptr<LocationService> m_locationManager;
  std::shared_ptr<const QLLocation> m_location;
  std::optional<QLWeather> m_weather;
  bool m_isWanted{false};
  int m_entries{0};  // how often it was forgotten
};

}  // namespace quillo
