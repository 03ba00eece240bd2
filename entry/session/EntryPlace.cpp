#include "entry/session/EntryPlace.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "qlcore/services/QLLocationFormatter.h"
#include "qlcore/services/QLWeatherFormatter.h"
#include "qlcore/services/WeatherService.h"

#include <QDateTime>
#include <QPointer>
#include <QStringList>

#include <utility>

namespace quillo {

// How long a place is sought, in seconds.
static constexpr double searchTimeout = 15.0;
// A place that is less certain than this is no place to ask the weather of, unless it is the last word. In metres.
static constexpr double weatherAccuracy = 1000.0;
// Between place and weather: a bullet.
static constexpr char16_t metadataSeparator[] = u"  \u2022  ";

EntryPlace::EntryPlace(EntryPlaceServices services) : m_services(std::move(services)) {}

bool EntryPlace::isAutomatic() const {
  const auto automatic = settingValue(m_services.config.groupProperties(), Key::addLocationAutomatically);
  return automatic && automatic->boolValue();
}

LocationService* EntryPlace::locationManager() {
  if (!m_locationManager && m_services.makeLocationManager) m_locationManager = m_services.makeLocationManager();
  return m_locationManager.get();
}

void EntryPlace::fetchLocationAndWeatherIfNeeded() {
  LocationService* manager = locationManager();
  if (!manager || manager->isSearching() || !manager->locationServicesEnabled() || !manager->isAuthorized()) return;
  // Once a search, however often its fixes improve.
  const auto weatherIsRequested = std::make_shared<bool>(false);
  manager->startWithTimeout(
      searchTimeout, [this, weatherIsRequested](const std::shared_ptr<const QLLocation>& location, bool isFinal) {
        locationFound(location, isFinal, *weatherIsRequested);
      });
  Q_EMIT awaitsPlaceDidChange(true);
}

void EntryPlace::locationFound(const std::shared_ptr<const QLLocation>& location, bool isFinal,
                               bool& weatherIsRequested) {
  setLocation(location);
  Q_EMIT awaitsPlaceDidChange(false);
  if (!location || weatherIsRequested) return;
  if (!isFinal && !(m_locationManager->horzAccuracy() <= weatherAccuracy)) return;
  weatherIsRequested = true;
  updateWeatherFromLocation();
}

void EntryPlace::updateWeatherFromLocation() {
  if (!m_location || !m_services.weather) return;
  m_services.weather->weatherAtLatitude(
      m_location->latitude, m_location->longitude, Date::now(),
      [self = QPointer(this), entry = m_entries](const QLWeather& weather) {
        // The user may have switched it off meanwhile, or gone on to another entry.
        if (self && self->m_isWanted && self->m_entries == entry) self->setWeather(weather);
      },
      [](const Error&) {});
}

void EntryPlace::stopLocating() {
  if (m_locationManager) m_locationManager->stop();
  Q_EMIT awaitsPlaceDidChange(false);
}

void EntryPlace::forget() {
  ++m_entries;
  m_isWanted = false;
  stopLocating();
  setLocation(nullptr);
  setWeather({});
}

void EntryPlace::setLocation(std::shared_ptr<const QLLocation> location) {
  if (location == m_location) return;
  m_location = std::move(location);
  Q_EMIT metadataDidChange();
}

void EntryPlace::setWeather(const std::optional<QLWeather>& weather) {
  m_weather = weather;
  Q_EMIT metadataDidChange();
}

QString EntryPlace::metadataText() const {
  QStringList parts;
  if (m_location) parts << QLLocationFormatter().localLocationStringForLocation(*m_location);
  // A formatter each time: the main application may have changed the scale.
  if (m_weather) parts << weatherFormatterWithPreferredScale(m_services.config).stringForObjectValue(*m_weather);
  return parts.join(QString::fromUtf16(metadataSeparator));
}

}  // namespace quillo
