#include "qlcore/services/WeatherCache.h"

#include "foundation/FileContents.h"
#include "foundation/Log.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostAnswers = 16;
// A hundred hours of weather take some ten kilobytes.
constexpr qint64 largestFile = 1024LL * 1024;
// Nothing that the service says holds for longer, whatever it says.
constexpr double day = 24 * 3600;

// Whether it can be sent in a header.
bool isHeaderValue(const QByteArray& text) {
  constexpr qsizetype longest = 256;
  return text.size() <= longest && std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

QJsonObject toObject(const WeatherCache::Answer& answer) {
  return {{u"received"_s, answer.received},
          {u"expires"_s, answer.expires},
          {u"lastModified"_s, QString::fromLatin1(answer.lastModified)},
          {u"entityTag"_s, QString::fromLatin1(answer.entityTag)},
          {u"forecast"_s, answer.forecast.toObject()}};
}

std::optional<WeatherCache::Answer> answerFromObject(const QJsonObject& object) {
  auto forecast = WeatherForecast::fromObject(object["forecast"_L1].toObject());
  if (!forecast) return std::nullopt;
  WeatherCache::Answer answer{std::move(*forecast), object["lastModified"_L1].toString().toLatin1(),
                              object["entityTag"_L1].toString().toLatin1(), object["received"_L1].toDouble(),
                              object["expires"_L1].toDouble()};
  return isHeaderValue(answer.lastModified) && isHeaderValue(answer.entityTag) ? std::optional(std::move(answer))
                                                                               : std::nullopt;
}

}  // namespace

bool WeatherCache::Answer::isFresh(double now) const {
  // An answer from the future means that the clock was set back: when it expires is not known then.
  return received <= now && now < expires && now < received + day;
}

WeatherCache::WeatherCache(QString path, const QUrl& service)
    : m_path(std::move(path)), m_service(service.toString()) {}

const WeatherCache::Answer* WeatherCache::find(const QString& place, double now) {
  readOnce(now);
  const auto answer = m_answers.constFind(place);
  return answer == m_answers.cend() ? nullptr : &*answer;
}

void WeatherCache::insert(const QString& place, Answer answer, double now) {
  readOnce(now);
  // Before the new one comes, which with a clock set back is not the latest.
  if (m_answers.size() >= mostAnswers && !m_answers.contains(place)) dropOldest();
  m_answers.emplace(place, std::move(answer));
  write();
}

void WeatherCache::confirm(const QString& place, double now, double expires) {
  const auto answer = m_answers.find(place);
  if (answer == m_answers.end()) return;
  answer->received = now;
  answer->expires = expires;
  write();
}

bool WeatherCache::isSilent(double now) {
  readOnce(now);
  // More than a day ahead, the clock was set back.
  return now < m_silentUntil && m_silentUntil <= now + day;
}

void WeatherCache::keepSilentUntil(double instant, double now) {
  readOnce(now);
  m_silentUntil = std::min(instant, now + day);
  write();
}

void WeatherCache::dropOldest() {
  m_answers.erase(std::min_element(m_answers.begin(), m_answers.end(),
                                   [](const Answer& a, const Answer& b) { return a.received < b.received; }));
}

void WeatherCache::readOnce(double now) {
  if (std::exchange(m_isRead, true) || m_path.isEmpty() || QFileInfo(m_path).size() > largestFile) return;
  const auto bytes = contentsOfFile(m_path);
  const QJsonObject kept = QJsonDocument::fromJson(bytes.value_or(QByteArray())).object();
  if (kept["service"_L1].toString() != m_service) return;
  m_silentUntil = kept["silentUntil"_L1].toDouble();
  const QJsonObject answers = kept["answers"_L1].toObject();
  for (auto place = answers.begin(); place != answers.end() && m_answers.size() < mostAnswers; ++place) {
    auto answer = answerFromObject(place.value().toObject());
    // Of those that the service would not confirm any more, the places need not be kept either.
    if (answer && answer->received <= now && now < answer->received + day)
      m_answers.emplace(place.key(), std::move(*answer));
  }
}

void WeatherCache::write() const {
  if (m_path.isEmpty()) return;
  QJsonObject answers;
  for (auto answer = m_answers.begin(); answer != m_answers.end(); ++answer)
    answers.insert(answer.key(), toObject(answer.value()));
  const QJsonObject kept{{u"service"_s, m_service}, {u"silentUntil"_s, m_silentUntil}, {u"answers"_s, answers}};
  const QByteArray bytes = QJsonDocument(kept).toJson(QJsonDocument::Compact);
  Error error;
  if (bytes.size() > largestFile || !QDir().mkpath(QFileInfo(m_path).path()) ||
      !writeFileAtomically(m_path, bytes, &error))
    QLLogInfo(u"The weather will be asked for again after a restart: %1 cannot be written. %2"_s.arg(
        m_path, error.localizedDescription));
}

}  // namespace quillo
