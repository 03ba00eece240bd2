#pragma once

#include "qlcore/QLLocation.h"

#include <QList>
#include <QString>

namespace quillo {

class QLLocationFormatter;

// A place of the table of places that somebody looked for.
struct FoundPlace {
  QString title;  // no two found together have the same
  QLLocation location;

  bool operator==(const FoundPlace&) const = default;
};

// The populated places whose names begin with `text`, whatever its case and accents; what stands behind a comma is the
// beginning of the country's name. The largest first. The first use in the process loads the table; main thread only.
[[nodiscard]] QList<FoundPlace> placesNamed(const QString& text, const QLLocationFormatter& formatter,
                                            qsizetype most = 8);

}  // namespace quillo
