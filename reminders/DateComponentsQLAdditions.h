#pragma once

#include "foundation/DateComponents.h"

#include <QLatin1StringView>

#include <optional>

namespace quillo::QLAdditions {

// The name of the date component that holds counts of the unit with this value, "day" for 16; nothing for a value that
// is no unit.
[[nodiscard]] std::optional<QLatin1StringView> keyForCalendarUnit(quint64 unit);

}  // namespace quillo::QLAdditions
