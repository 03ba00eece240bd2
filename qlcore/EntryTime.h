#pragma once

#include "foundation/Date.h"
#include "foundation/TimeZone.h"

#include <QDateTime>

namespace quillo {

// A moment as a clock showed it in a zone; in the user's own where the system does not know that one.
[[nodiscard]] inline QDateTime localTime(Date date, const QString& zoneName) {
  const QDateTime utc = date.toDateTime();
  const auto zone = TimeZone::timeZoneWithName(zoneName);
  return zone && utc.isValid() ? utc.toOffsetFromUtc(zone->secondsFromUTC(utc.toSecsSinceEpoch())) : utc.toLocalTime();
}

}  // namespace quillo
