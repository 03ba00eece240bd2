#pragma once

#include <QString>

#include <optional>

namespace quillo {

// The condition that a symbol code of the weather service stands for, in words: "lightrainshowers_night" is "Light rain
// showers". Nothing for an unknown code.
[[nodiscard]] std::optional<QString> weatherCondition(const QString& symbolCode);

}  // namespace quillo
