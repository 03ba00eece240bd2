#pragma once

#include "qlcore/services/LocationService.h"

#include <QDeadlineTimer>
#include <QGeoPositionInfoSource>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <limits>
#include <memory>

namespace quillo {

class PositionProvider;

// The location service of the desktop, GeoClue, or an NMEA receiver where Key::locationNMEASource names one.
//
// A search ends with the first fix of at most `sufficientAccuracy` metres, with the time-out, or when the source says
// that it cannot go on. The fixes carry the name of the nearest place; a fix far from any has none. Main thread only.
class QLLocationManager final : public QObject, public LocationService {
  Q_OBJECT

 public:
  // Metres. More does not change the name of a place or its weather.
  static constexpr double sufficientAccuracy = 100;

  // See positionProvider() for the one that the agent's own defaults choose.
  explicit QLLocationManager(std::unique_ptr<PositionProvider> provider);
  ~QLLocationManager() override;

  // True for an NMEA receiver that is there. For GeoClue: it runs and has a position to offer, or could be started.
  // One or two questions to the bus, which are given up after a tenth of a second; false without a bus.
  [[nodiscard]] bool locationServicesEnabled() const override;
  // False for some minutes after the service refused this program; it cannot be asked without starting a search.
  [[nodiscard]] bool isAuthorized() const override;

  [[nodiscard]] bool isSearching() const override { return m_handler != nullptr; }
  void startWithTimeout(double seconds, Handler handler) override;
  void stop() override;
  [[nodiscard]] double horzAccuracy() const override { return m_accuracy; }

 private:
  void positionUpdated(const QGeoPositionInfo& info);
  void errorOccurred(QGeoPositionInfoSource::Error error);
  void handOver(bool isFinal);

  std::unique_ptr<PositionProvider> m_provider;
  std::unique_ptr<QGeoPositionInfoSource> m_source;  // while a search is on
  uint64_t m_search{0};                              // counts searches, to know a late word of an earlier one
  QTimer m_timeout;
  Handler m_handler;
  std::shared_ptr<const QLLocation> m_location;
  double m_accuracy{std::numeric_limits<double>::infinity()};
  QDeadlineTimer m_refused{0};
};

}  // namespace quillo
