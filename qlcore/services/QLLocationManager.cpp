#include "qlcore/services/QLLocationManager.h"

#include "foundation/Log.h"
#include "qlcore/services/PositionProvider.h"
#include "qlcore/services/QLLocationFormatter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::minutes refusalLasts{5};

double accuracyOf(const QGeoPositionInfo& info) {
  const double metres = info.hasAttribute(QGeoPositionInfo::HorizontalAccuracy)
                            ? info.attribute(QGeoPositionInfo::HorizontalAccuracy)
                            : std::numeric_limits<double>::quiet_NaN();
  return metres >= 0 ? metres : std::numeric_limits<double>::infinity();
}

int milliseconds(double seconds) {
  if (!(seconds > 0)) return 0;
  return static_cast<int>(std::min(seconds * 1000, double{std::numeric_limits<int>::max()}));
}

}  // namespace

QLLocationManager::QLLocationManager(std::unique_ptr<PositionProvider> provider) : m_provider(std::move(provider)) {
  m_timeout.setSingleShot(true);
  connect(&m_timeout, &QTimer::timeout, this, [this] { handOver(/*isFinal=*/true); });
}

QLLocationManager::~QLLocationManager() {
  stop();
}

bool QLLocationManager::locationServicesEnabled() const {
  return m_provider->isEnabled();
}

bool QLLocationManager::isAuthorized() const {
  return m_refused.hasExpired();
}

void QLLocationManager::startWithTimeout(double seconds, Handler handler) {
  stop();
  m_handler = handler ? std::move(handler) : [](const auto&, bool) {};
  m_location.reset();
  m_accuracy = std::numeric_limits<double>::infinity();
  m_timeout.start(milliseconds(seconds));

  m_source = m_provider->makeSource();
  if (!m_source) {
    m_timeout.start(0);
    return;
  }
  // Queued, as a source may speak while it is being started; and what was queued outlives its connection.
  const auto current = [this, search = m_search](auto&& act) {
    if (search == m_search) act();
  };
  connect(
      m_source.get(), &QGeoPositionInfoSource::positionUpdated, this,
      [this, current](const QGeoPositionInfo& info) { current([&] { positionUpdated(info); }); }, Qt::QueuedConnection);
  connect(
      m_source.get(), &QGeoPositionInfoSource::errorOccurred, this,
      [this, current](QGeoPositionInfoSource::Error error) { current([&] { errorOccurred(error); }); },
      Qt::QueuedConnection);
  m_source->startUpdates();
}

void QLLocationManager::stop() {
  ++m_search;
  m_handler = nullptr;
  m_timeout.stop();
  if (m_source) m_source->stopUpdates();
  m_source.reset();
}

void QLLocationManager::positionUpdated(const QGeoPositionInfo& info) {
  const QGeoCoordinate coordinate = info.coordinate();
  const double accuracy = accuracyOf(info);
  if (!coordinate.isValid() || accuracy > m_accuracy) return;
  QLLocation location{coordinate.latitude(), coordinate.longitude(), {}};
  location.placeName = QLLocationFormatter().placeNameForLocation(location);
  m_location = std::make_shared<const QLLocation>(std::move(location));
  m_accuracy = accuracy;
  handOver(/*isFinal=*/accuracy <= sufficientAccuracy);
}

void QLLocationManager::errorOccurred(QGeoPositionInfoSource::Error error) {
  switch (error) {
    case QGeoPositionInfoSource::AccessError:
      m_refused.setRemainingTime(refusalLasts);
      QLLogInfo(u"The location service refused this program."_s);
      return handOver(/*isFinal=*/true);
    case QGeoPositionInfoSource::ClosedError:
    case QGeoPositionInfoSource::UnknownSourceError:
      QLLogInfo(u"The location service cannot say where this computer is."_s);
      return handOver(/*isFinal=*/true);
    case QGeoPositionInfoSource::UpdateTimeoutError:  // the next fix may still come
    case QGeoPositionInfoSource::NoError:
      return;
  }
}

void QLLocationManager::handOver(bool isFinal) {
  // The handler may stop the search, start another or destroy the manager: nothing of this object is touched after it.
  const Handler handler = m_handler;
  const auto location = m_location;
  if (isFinal) stop();
  handler(location, isFinal);
}

}  // namespace quillo
