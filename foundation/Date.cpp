#include "foundation/Date.h"

#include <QTimeZone>

#include <chrono>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

// Seconds since 1970 of the years that ISO 8601 writes with four digits.
static constexpr double yearOne = -62135596800.0;
static constexpr double yearTenThousand = 253402300800.0;

Date Date::now() {
  using namespace std::chrono;
  return since1970(duration<double>(system_clock::now().time_since_epoch()).count());
}

Date Date::fromDateTime(const QDateTime& dateTime) {
  if (!dateTime.isValid()) return Date();
  return since1970(static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0);
}

std::optional<Date> Date::fromISO8601(const QString& text) {
  const QDateTime dateTime = QDateTime::fromString(text.trimmed(), Qt::ISODateWithMs);
  if (!dateTime.isValid() || dateTime.timeSpec() == Qt::LocalTime) return std::nullopt;
  return fromDateTime(dateTime);
}

QDateTime Date::toDateTime() const {
  const double seconds = timeIntervalSince1970();
  // The negated form also turns NaN away.
  if (!(seconds >= yearOne && seconds < yearTenThousand)) return {};
  return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000.0), Qt::UTC);
}

QString Date::toISO8601() const {
  const QDateTime dateTime = toDateTime();
  if (!dateTime.isValid()) return u"invalid date"_s;
  return dateTime.toString(dateTime.time().msec() == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

QString Date::description() const {
  const QDateTime dateTime = toDateTime();
  if (!dateTime.isValid()) return u"invalid date"_s;
  return dateTime.toString(u"yyyy-MM-dd HH:mm:ss"_s) + u" +0000"_s;
}

}  // namespace quillo
