#include "qlcore/services/QLWeatherManager.h"

#include "config/Keys.h"
#include "foundation/Log.h"
#include "foundation/UserDefaults.h"
#include "qlcore/services/WeatherRequests.h"

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView publicServiceURL{"https://api.met.no/weatherapi/locationforecast/2.0"};

bool isUsable(const QUrl& url) {
  return url.isValid() && !url.host().isEmpty() && (url.scheme() == u"https" || url.scheme() == u"http");
}

QUrl serviceURL(const UserDefaults& ownDefaults) {
  const auto setting = ownDefaults.objectForKey(Key::weatherServiceURL);
  QUrl url(setting ? setting->string() : QString(), QUrl::StrictMode);
  if (isUsable(url)) return url;
  if (setting) QLLogWarn(u"%1 is no URL; the public service is used."_s.arg(Key::weatherServiceURL));
  return QUrl(publicServiceURL);
}

}  // namespace

QLWeatherManager::Settings QLWeatherManager::standardSettings(const UserDefaults& ownDefaults, const QString& caches) {
  return {.baseURL = serviceURL(ownDefaults), .cacheFile = caches + u"/quillo/Weather.json"_s};
}

QLWeatherManager::QLWeatherManager(const Clock& clock, Settings settings)
    : m_requests(std::make_unique<WeatherRequests>(clock, std::move(settings))) {}

QLWeatherManager::~QLWeatherManager() = default;

void QLWeatherManager::weatherAtLatitude(double latitude, double longitude, Date date, Success success,
                                         Failure failure) {
  m_requests->request(latitude, longitude, date, std::move(success), std::move(failure));
}

}  // namespace quillo
