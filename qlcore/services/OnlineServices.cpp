#include "qlcore/services/OnlineServices.h"

#include "config/Keys.h"
#include "foundation/LoadableModule.h"
#include "foundation/UserDefaults.h"
#include "qlcore/services/WeatherError.h"

#include <QObject>

#include <limits>
#include <optional>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

LoadableModule& servicesModule() {
  static LoadableModule module(u"quillo-services"_s);
  return module;
}

class OnlineWeather final : public WeatherService {
 public:
  OnlineWeather(const Clock& clock, const UserDefaults& ownDefaults, QString caches)
      : m_clock(clock), m_ownDefaults(ownDefaults), m_caches(std::move(caches)) {}

  void weatherAtLatitude(double latitude, double longitude, Date date, Success success, Failure failure) override {
    makeService();
    if (m_service)
      return m_service->weatherAtLatitude(latitude, longitude, date, std::move(success), std::move(failure));
    if (!failure) return;
    const Error error = WeatherError::make(WeatherError::NotReachable, u"The weather service is not installed."_s);
    QMetaObject::invokeMethod(
        &m_context, [failure = std::move(failure), error] { failure(error); }, Qt::QueuedConnection);
  }

 private:
  // Anew where the settings name another service by now.
  void makeService() {
    const auto source = m_ownDefaults.objectForKey(Key::weatherServiceURL);
    if (m_service && source == m_source) return;
    auto* const make = servicesModule().function<MakeWeather>("quilloMakeWeather");
    if (!make) return;
    // The one before still has answers to give; of one more the questions are given up.
    m_serviceBefore = std::move(m_service);
    make(m_clock, m_ownDefaults, m_caches, m_service);
    m_source = source;
  }

  const Clock& m_clock;
  const UserDefaults& m_ownDefaults;
  QString m_caches;
  std::optional<PropertyListValue> m_source;
  std::unique_ptr<WeatherService> m_service;
  std::unique_ptr<WeatherService> m_serviceBefore;
  QObject m_context;
};

// Asks the receiver that the settings name by the time; a search that is under way goes on with its own.
class OnlineLocation final : public LocationService {
 public:
  OnlineLocation(const UserDefaults& ownDefaults, MakeLocation* make) : m_ownDefaults(ownDefaults), m_make(make) {}

  [[nodiscard]] bool locationServicesEnabled() const override { return service().locationServicesEnabled(); }
  [[nodiscard]] bool isAuthorized() const override { return service().isAuthorized(); }
  [[nodiscard]] bool isSearching() const override { return m_service && m_service->isSearching(); }
  void startWithTimeout(double seconds, Handler handler) override {
    stop();
    service().startWithTimeout(seconds, std::move(handler));
  }
  void stop() override {
    if (m_service) m_service->stop();
  }
  [[nodiscard]] double horzAccuracy() const override {
    return m_service ? m_service->horzAccuracy() : std::numeric_limits<double>::infinity();
  }

 private:
  [[nodiscard]] LocationService& service() const {
    const auto source = m_ownDefaults.objectForKey(Key::locationNMEASource);
    if (!m_service || (source != m_source && !m_service->isSearching())) {
      m_make(m_ownDefaults, m_service);
      m_source = source;
    }
    return *m_service;
  }

  const UserDefaults& m_ownDefaults;
  MakeLocation* m_make;
  mutable std::optional<PropertyListValue> m_source;
  mutable std::unique_ptr<LocationService> m_service;
};

}  // namespace

std::unique_ptr<WeatherService> onlineWeather(const Clock& clock, const UserDefaults& ownDefaults, QString caches) {
  return std::make_unique<OnlineWeather>(clock, ownDefaults, std::move(caches));
}

std::unique_ptr<LocationService> onlineLocation(const UserDefaults& ownDefaults) {
  auto* const make = servicesModule().function<MakeLocation>("quilloMakeLocation");
  return make ? std::make_unique<OnlineLocation>(ownDefaults, make) : nullptr;
}

}  // namespace quillo
