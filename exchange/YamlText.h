#pragma once

#include <QString>

namespace quillo {

// `text` as a scalar of YAML: as it stands where every reader takes that for the same text, else in double quotes.
[[nodiscard]] QString yamlText(const QString& text);

}  // namespace quillo
