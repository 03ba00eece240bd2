#pragma once

#include "foundation/Date.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// What belongs to an entry beside its text.
struct EntryDetails {
  Date creationDate;
  QString timeZone;  // the IANA name
  QStringList tags;
  std::optional<QLLocation> location;
  std::optional<QLWeather> weather;

  bool operator==(const EntryDetails&) const = default;

  // These, with what somebody changed from `before` to `after`.
  [[nodiscard]] EntryDetails withChange(const EntryDetails& before, const EntryDetails& after) const {
    EntryDetails changed = *this;
    const auto take = [&](auto EntryDetails::*part) {
      if (before.*part != after.*part) changed.*part = after.*part;
    };
    take(&EntryDetails::creationDate);
    take(&EntryDetails::timeZone);
    take(&EntryDetails::tags);
    take(&EntryDetails::location);
    take(&EntryDetails::weather);
    return changed;
  }
};

}  // namespace quillo
