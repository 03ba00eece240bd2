#pragma once

#include "platform/Clock.h"
#include "qlcore/services/QLWeatherManager.h"
#include "qlcore/services/WeatherCache.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class QNetworkAccessManager;
class QNetworkReply;

namespace quillo {

// The traffic with the weather service: at most one request at a time for a place, the answers kept until they expire,
// silence for as long as the service asks for it. Nothing of the network exists while no request is under way.
class WeatherRequests final : public QObject {
 public:
  WeatherRequests(const Clock& clock, QLWeatherManager::Settings settings);
  ~WeatherRequests() override;

  void request(double latitude, double longitude, Date date, WeatherService::Success success,
               WeatherService::Failure failure);

 private:
  struct Waiter {
    Date date;
    WeatherService::Success success;
    WeatherService::Failure failure;
  };

  void send(const QString& place);
  void readAnswer(const QString& place, QNetworkReply& reply);
  void readForecast(const QString& place, QNetworkReply& reply);
  void readConfirmation(const QString& place, const QNetworkReply& reply);
  void keepSilentFor(const QNetworkReply& reply);
  [[nodiscard]] double expiryFrom(const QNetworkReply& reply) const;
  // Ends the requests that wait for the place.
  void succeed(const QString& place, const WeatherForecast& forecast);
  void fail(const QString& place, const Error& error);
  void redirect(const QString& place, QNetworkReply& reply, const QUrl& url);
  void drop(QNetworkReply& reply);

  void tell(const Waiter& waiter, const WeatherForecast& forecast);
  void tell(const Waiter& waiter, const Error& error);

  const Clock& m_clock;
  QLWeatherManager::Settings m_settings;
  std::unique_ptr<QNetworkAccessManager> m_network;
  QHash<QString, std::vector<Waiter>> m_waiting;  // by the query that names the place
  WeatherCache m_cache;
};

}  // namespace quillo
