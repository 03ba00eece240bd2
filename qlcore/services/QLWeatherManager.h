#pragma once

#include "qlcore/services/WeatherService.h"

#include <QString>
#include <QUrl>

#include <memory>

namespace quillo {

class Clock;
class UserDefaults;
class WeatherRequests;

// The weather from the Locationforecast service of MET Norway, which needs no key and covers the world. Keeps to its
// rules: names itself, sends coordinates cut to four decimals (11 metres) and nothing else about the user, asks again
// for a place only when the last answer has expired, and then only for what changed. Main thread only.
class QLWeatherManager final : public WeatherService {
 public:
  struct Settings {
    // Of the service; "/compact" and the coordinates are added.
    QUrl baseURL;
    // For a whole answer, in milliseconds.
    int timeoutMilliseconds{10'000};
    // Where the service's answers and wishes are kept for the next start; empty to keep none.
    QString cacheFile{};
  };

  // The base URL that the defaults name under Key::weatherServiceURL, else the public service's; what is kept goes
  // below `caches`, the user's directory for that.
  [[nodiscard]] static Settings standardSettings(const UserDefaults& ownDefaults, const QString& caches);

  // `clock` must outlive the manager.
  QLWeatherManager(const Clock& clock, Settings settings);
  ~QLWeatherManager() override;

  // Takes the forecast nearest to `date`; a failure when that is more than six hours away. The errors are of
  // WeatherError::domain.
  void weatherAtLatitude(double latitude, double longitude, Date date, Success success, Failure failure) override;

 private:
  std::unique_ptr<WeatherRequests> m_requests;
};

}  // namespace quillo
