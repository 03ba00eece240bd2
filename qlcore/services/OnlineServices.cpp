#include "qlcore/services/OnlineServices.h"

#include "foundation/LoadableModule.h"
#include "qlcore/services/WeatherError.h"

#include <QObject>

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
    if (!m_service)
      if (auto* const make = servicesModule().function<MakeWeather>("quilloMakeWeather"))
        make(m_clock, m_ownDefaults, m_caches, m_service);
    if (m_service)
      return m_service->weatherAtLatitude(latitude, longitude, date, std::move(success), std::move(failure));
    if (!failure) return;
    const Error error = WeatherError::make(WeatherError::NotReachable, u"The weather service is not installed."_s);
    QMetaObject::invokeMethod(
        &m_context, [failure = std::move(failure), error] { failure(error); }, Qt::QueuedConnection);
  }

 private:
  const Clock& m_clock;
  const UserDefaults& m_ownDefaults;
  QString m_caches;
  std::unique_ptr<WeatherService> m_service;
  QObject m_context;
};

}  // namespace

std::unique_ptr<WeatherService> onlineWeather(const Clock& clock, const UserDefaults& ownDefaults, QString caches) {
  return std::make_unique<OnlineWeather>(clock, ownDefaults, std::move(caches));
}

std::unique_ptr<LocationService> onlineLocation(const UserDefaults& ownDefaults) {
  std::unique_ptr<LocationService> service;
  if (auto* const make = servicesModule().function<MakeLocation>("quilloMakeLocation")) make(ownDefaults, service);
  return service;
}

}  // namespace quillo
