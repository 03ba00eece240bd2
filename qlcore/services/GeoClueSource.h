#pragma once

#include <QDBusObjectPath>
#include <QGeoPositionInfoSource>
#include <QVariant>

namespace quillo {

// Positions from GeoClue. Unlike the position library's own client for it, this one never waits for an answer (a
// service that stalls would freeze the program for more than a minute), begins with no old position and keeps none on
// disk.
//
// A refusal of the service is AccessError, every other failure ClosedError.
class GeoClueSource final : public QGeoPositionInfoSource {
  Q_OBJECT

 public:
  GeoClueSource() : QGeoPositionInfoSource(nullptr) {}
  ~GeoClueSource() override;

  void startUpdates() override;
  void stopUpdates() override;
  // Starts the updates; the time is not looked at.
  void requestUpdate(int timeout) override;
  [[nodiscard]] QGeoPositionInfo lastKnownPosition(bool fromSatellitesOnly) const override;
  [[nodiscard]] PositioningMethods supportedPositioningMethods() const override { return AllPositioningMethods; }
  [[nodiscard]] int minimumUpdateInterval() const override { return 0; }
  [[nodiscard]] Error error() const override { return m_error; }

 private Q_SLOTS:
  void locationUpdated(const QDBusObjectPath& oldPath, const QDBusObjectPath& newPath);

 private:
  void startClient(const QString& path);
  void setProperty(const QString& name, const QVariant& value);
  void readLocation(const QVariantMap& properties);
  void fail(const QString& errorName);

  bool m_isRunning{false};
  QString m_client;  // the object of the service that stands for this program; empty until it is known
  QGeoPositionInfo m_last;
  Error m_error{NoError};
};

}  // namespace quillo
