#pragma once

#include <QGeoPositionInfoSource>
#include <QString>

#include <memory>

namespace quillo {

class UserDefaults;

// Where positions come from.
class PositionProvider {
 public:
  virtual ~PositionProvider() = default;
  // Quick: a tenth of a second at the very most.
  [[nodiscard]] virtual bool isEnabled() const = 0;
  // A new source, not started; null when there is none.
  [[nodiscard]] virtual std::unique_ptr<QGeoPositionInfoSource> makeSource() const = 0;
};

// The desktop's location service, on the system bus.
class GeoCluePositionProvider final : public PositionProvider {
 public:
  [[nodiscard]] bool isEnabled() const override;
  [[nodiscard]] std::unique_ptr<QGeoPositionInfoSource> makeSource() const override;
};

// A receiver that speaks NMEA 0183: "serial:/dev/ttyUSB0", "socket://HOST:PORT" (as gpsd has one), or the path of a
// file of at most 1 MiB with what one has said, which is played at the pace of its own clock, from the start for every
// source.
class NMEAPositionProvider final : public PositionProvider {
 public:
  explicit NMEAPositionProvider(QString receiver) : m_receiver(std::move(receiver)) {}
  // Whether the file or device is there; a socket is taken to be.
  [[nodiscard]] bool isEnabled() const override;
  [[nodiscard]] std::unique_ptr<QGeoPositionInfoSource> makeSource() const override;

 private:
  QString m_receiver;
};

// The receiver that Key::locationNMEASource names, else the desktop's service.
[[nodiscard]] std::unique_ptr<PositionProvider> positionProvider(const UserDefaults& ownDefaults);

}  // namespace quillo
