// Where the entry is written, and in what weather: the search, and the line below the text.

#include "config/QuilloConfig.h"
#include "controls/CustomCursorButton.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/QLLocationFormatter.h"
#include "qlcore/services/QLWeatherFormatter.h"
#include "qlcore/services/WeatherService.h"
#include "ui_AgentEntryWindow.h"

#include <QTimer>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// How long a place is sought, in seconds.
static constexpr double searchTimeout = 15.0;
// A place that is less certain than this is no place to ask the weather of, unless it is the last word. In metres.
static constexpr double weatherAccuracy = 1000.0;
// Between place and weather: a bullet.
static constexpr char16_t metadataSeparator[] = u"  \u2022  ";
static constexpr auto refocusDelay = 50ms;

LocationService* AgentEntryWindowController::locationManager() {
  if (!m_locationManager && m_services.makeLocationManager) m_locationManager = m_services.makeLocationManager();
  return m_locationManager.get();
}

void AgentEntryWindowController::fetchLocationAndWeatherIfNeeded() {
  LocationService* manager = locationManager();
  if (!manager || manager->isSearching() || !manager->locationServicesEnabled() || !manager->isAuthorized()) return;
  // Once a search, however often its fixes improve.
  const auto weatherIsRequested = std::make_shared<bool>(false);
  manager->startWithTimeout(
      searchTimeout, [this, weatherIsRequested](const std::shared_ptr<const QLLocation>& location, bool isFinal) {
        locationFound(location, isFinal, *weatherIsRequested);
      });
  window().setShowsLocationSpinner(true);
}

void AgentEntryWindowController::locationFound(const std::shared_ptr<const QLLocation>& location, bool isFinal,
                                               bool& weatherIsRequested) {
  setLocation(location);
  window().setShowsLocationSpinner(false);
  if (!location || weatherIsRequested) return;
  if (!isFinal && !(m_locationManager->horzAccuracy() <= weatherAccuracy)) return;
  weatherIsRequested = true;
  updateWeatherFromLocation();
}

void AgentEntryWindowController::updateWeatherFromLocation() {
  if (!m_location || !m_services.weather) return;
  // A failure shows no weather, and nothing else.
  m_services.weather->weatherAtLatitude(
      m_location->latitude, m_location->longitude, Date::fromDateTime(QDateTime::currentDateTimeUtc()),
      [self = QPointer(this)](const QLWeather& weather) {
        // The user may have switched it off meanwhile.
        if (self && self->window().ui().locationToggleButton->isChecked()) self->setWeather(weather);
      },
      [](const Error&) {});
}

void AgentEntryWindowController::stopLocating() {
  if (m_locationManager) m_locationManager->stop();
  window().setShowsLocationSpinner(false);
}

void AgentEntryWindowController::setLocation(std::shared_ptr<const QLLocation> location) {
  if (location == m_location) return;
  m_location = std::move(location);
  updateMetadataLabel();
}

void AgentEntryWindowController::setWeather(const std::optional<QLWeather>& weather) {
  m_weather = weather;
  updateMetadataLabel();
}

void AgentEntryWindowController::updateMetadataLabel() {
  QStringList parts;
  if (m_location) parts << QLLocationFormatter().localLocationStringForLocation(*m_location);
  // A formatter each time: the main application may have changed the scale.
  if (m_weather) parts << weatherFormatterWithPreferredScale(m_services.config).stringForObjectValue(*m_weather);
  window().setEntryMetadataText(parts.join(QString::fromUtf16(metadataSeparator)));
}

void AgentEntryWindowController::locationButtonToggled(const Button& button) {
  if (!button.isChecked()) {
    // Of this entry only; the setting stays.
    stopLocating();
    setLocation(nullptr);
    setWeather(std::nullopt);
    return;
  }
  fetchLocationAndWeatherIfNeeded();
  // The desktop may ask for leave to use the place, and take the keyboard for that.
  QTimer::singleShot(refocusDelay, this, [this] {
    if (m_isShown && !window().hasAttachedSheet()) window().makeKeyAndOrderFront();
  });
}

}  // namespace quillo
