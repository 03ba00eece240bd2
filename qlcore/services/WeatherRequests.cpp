#include "qlcore/services/WeatherRequests.h"

#include "config/QuilloConfig.h"
#include "foundation/Log.h"
#include "qlcore/QLLocation.h"
#include "qlcore/services/HTTPDate.h"
#include "qlcore/services/WeatherError.h"

#include <QMetaObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrlQuery>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestAnswer = 1024LL * 1024;
constexpr double farthestForecast = 6 * 3600;
constexpr double day = 24 * 3600;
// For a service that asks for silence but does not say for how long. One that forbids the question will not think
// otherwise soon.
constexpr double usualSilence = 10 * 60;
constexpr double silenceWhereForbidden = 3600;
constexpr double shortestSilence = 60;

constexpr int statusOK = 200;
constexpr int statusNonAuthoritative = 203;  // a forecast, by a version of the service that will go
constexpr int statusNotModified = 304;
constexpr int statusForbidden = 403;
constexpr int statusTooMany = 429;
constexpr int statusUnavailable = 503;
constexpr int mostRedirects = 3;

bool asksForSilence(int status) {
  return status == statusForbidden || status == statusTooMany || status == statusUnavailable;
}

// Cut, not rounded, to four decimals. What falls short of a fourth decimal by less than the arithmetic's error has it.
QString cut(double degrees) {
  const double ticks = std::trunc(degrees * 1e4 + std::copysign(1e-6, degrees));
  return QString::number(ticks == 0 ? 0 : ticks / 1e4, 'f', 4);
}

// The service wants to know whom to write to.
QString userAgent() {
  return u"QuilloAgent/" QUILLO_VERSION u" (%1)"_s.arg(productionWebBaseURL);
}

QNetworkRequest requestFor(const QUrl& baseURL, const QString& place) {
  QUrl url = baseURL;
  url.setPath(url.path() + u"/compact"_s);
  url.setQuery(place);
  QNetworkRequest request(url);
  request.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
  request.setRawHeader("Accept", "application/json");
  // Or the user's language would be told.
  request.setRawHeader("Accept-Language", "*");
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
  request.setMaximumRedirectsAllowed(mostRedirects);
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  return request;
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

}  // namespace

WeatherRequests::WeatherRequests(const Clock& clock, QLWeatherManager::Settings settings)
    : m_clock(clock), m_settings(std::move(settings)), m_cache(m_settings.cacheFile, m_settings.baseURL) {}

WeatherRequests::~WeatherRequests() = default;

void WeatherRequests::request(double latitude, double longitude, Date date, WeatherService::Success success,
                              WeatherService::Failure failure) {
  const Waiter waiter{date, std::move(success), std::move(failure)};
  if (!QLLocation{latitude, longitude, {}}.isValid())
    return tell(waiter, WeatherError::make(WeatherError::InvalidPlace, u"There is no such place."_s));
  const QString place = u"lat=%1&lon=%2"_s.arg(cut(latitude), cut(longitude));
  const double now = m_clock.secondsSince1970();
  const auto* answer = m_cache.find(place, now);
  if (answer && answer->isFresh(now)) return tell(waiter, answer->forecast);
  if (m_cache.isSilent(now))
    return tell(waiter, WeatherError::make(WeatherError::TooMany, u"The weather service asked for silence."_s));
  std::vector<Waiter>& waiting = m_waiting[place];
  waiting.push_back(waiter);
  if (waiting.size() == 1) send(place);
}

void WeatherRequests::send(const QString& place) {
  if (!m_network) m_network = std::make_unique<QNetworkAccessManager>();
  QNetworkRequest request = requestFor(m_settings.baseURL, place);
  if (const auto* known = m_cache.find(place, m_clock.secondsSince1970())) {
    if (!known->lastModified.isEmpty()) request.setRawHeader("If-Modified-Since", known->lastModified);
    if (!known->entityTag.isEmpty()) request.setRawHeader("If-None-Match", known->entityTag);
  }
  QNetworkReply* const reply = m_network->get(request);

  connect(reply, &QNetworkReply::finished, this, [this, reply, place] {
    readAnswer(place, *reply);
    drop(*reply);
  });
  connect(reply, &QNetworkReply::redirected, this,
          [this, reply, place](const QUrl& url) { redirect(place, *reply, url); });
  connect(reply, &QNetworkReply::readyRead, this, [this, reply, place] {
    if (reply->bytesAvailable() <= largestAnswer) return;
    fail(place, WeatherError::make(WeatherError::BadAnswer, u"The weather service's answer is too large."_s));
    drop(*reply);
  });
  // For the whole answer: the network's own time-out begins anew with every byte.
  QTimer::singleShot(m_settings.timeoutMilliseconds, reply, [this, reply, place] {
    if (reply->isFinished()) return;
    fail(place, WeatherError::make(WeatherError::NotReachable, u"The weather service did not answer in time."_s));
    drop(*reply);
  });
}

void WeatherRequests::readAnswer(const QString& place, QNetworkReply& reply) {
  const int status = statusOf(reply);
  if (status == 0) return fail(place, WeatherError::make(WeatherError::NotReachable, reply.errorString()));
  if (status == statusOK || status == statusNonAuthoritative) return readForecast(place, reply);
  if (status == statusNotModified) return readConfirmation(place, reply);
  // A redirect that led nowhere; the status is its own.
  if (reply.error() != QNetworkReply::NoError && reply.error() <= QNetworkReply::UnknownNetworkError)
    return fail(place, WeatherError::make(WeatherError::NotReachable, reply.errorString()));
  if (asksForSilence(status)) keepSilentFor(reply);
  fail(place, WeatherError::make(status == statusTooMany ? WeatherError::TooMany : WeatherError::Refused,
                                 u"The weather service answered with status %1."_s.arg(status)));
}

void WeatherRequests::redirect(const QString& place, QNetworkReply& reply, const QUrl& url) {
  if (url.scheme() == u"https") {
    Q_EMIT reply.redirectAllowed();
    return;
  }
  // Where the user is must not be told for all on the way to read.
  fail(place, WeatherError::make(WeatherError::Refused, u"The weather service redirects to an address without TLS."_s));
  drop(reply);
}

void WeatherRequests::readForecast(const QString& place, QNetworkReply& reply) {
  if (reply.error() != QNetworkReply::NoError)
    return fail(place, WeatherError::make(WeatherError::NotReachable, reply.errorString()));
  if (statusOf(reply) == statusNonAuthoritative)
    QLLogWarn(u"The weather service will stop answering questions of this form."_s);
  auto forecast = WeatherForecast::fromJSON(reply.readAll());
  if (!forecast)
    return fail(place, WeatherError::make(WeatherError::BadAnswer, u"The weather service's answer is no forecast."_s));
  const double now = m_clock.secondsSince1970();
  m_cache.insert(place, {*forecast, reply.rawHeader("Last-Modified"), reply.rawHeader("ETag"), now, expiryFrom(reply)},
                 now);
  succeed(place, *forecast);
}

void WeatherRequests::readConfirmation(const QString& place, const QNetworkReply& reply) {
  const double now = m_clock.secondsSince1970();
  const auto* answer = m_cache.find(place, now);
  if (!answer)
    return fail(place, WeatherError::make(WeatherError::BadAnswer, u"The weather service confirmed nothing."_s));
  m_cache.confirm(place, now, expiryFrom(reply));
  succeed(place, answer->forecast);
}

// An answer that does not say is not used a second time without asking.
double WeatherRequests::expiryFrom(const QNetworkReply& reply) const {
  const double now = m_clock.secondsSince1970();
  return std::min(secondsFromHTTPDate(reply.rawHeader("Expires")).value_or(now), now + day);
}

void WeatherRequests::keepSilentFor(const QNetworkReply& reply) {
  const double now = m_clock.secondsSince1970();
  const double usual = statusOf(reply) == statusForbidden ? silenceWhereForbidden : usualSilence;
  const double until = secondsFromRetryAfter(reply.rawHeader("Retry-After"), now).value_or(now + usual);
  m_cache.keepSilentUntil(std::clamp(until, now + shortestSilence, now + day), now);
}

void WeatherRequests::succeed(const QString& place, const WeatherForecast& forecast) {
  for (const Waiter& waiter : m_waiting.take(place)) tell(waiter, forecast);
}

void WeatherRequests::fail(const QString& place, const Error& error) {
  QLLogInfo(u"No weather: %1"_s.arg(error.localizedDescription));
  for (const Waiter& waiter : m_waiting.take(place)) tell(waiter, error);
}

void WeatherRequests::drop(QNetworkReply& reply) {
  reply.disconnect(this);
  reply.abort();
  reply.deleteLater();
  // It may be what is calling.
  if (m_waiting.isEmpty() && m_network) m_network.release()->deleteLater();
}

void WeatherRequests::tell(const Waiter& waiter, const WeatherForecast& forecast) {
  const auto weather = forecast.weatherNearest(waiter.date, farthestForecast);
  if (!weather)
    return tell(waiter, WeatherError::make(WeatherError::NoForecast, u"There is no forecast for that time."_s));
  if (waiter.success)
    QMetaObject::invokeMethod(
        this, [success = waiter.success, weather = *weather] { success(weather); }, Qt::QueuedConnection);
}

void WeatherRequests::tell(const Waiter& waiter, const Error& error) {
  if (waiter.failure)
    QMetaObject::invokeMethod(
        this, [failure = waiter.failure, error] { failure(error); }, Qt::QueuedConnection);
}

}  // namespace quillo
