#pragma once

#include "foundation/Bundle.h"

#include <QIcon>
#include <QString>

namespace quillo {

// What a program of this product is called by, with its resources; `version` as "1.0.0".
[[nodiscard]] Bundle programBundle(const QString& identifier, const QString& version);

// The programs' own, for the frames and lists of windows where no installed theme has it; up to `largest` pixels a
// side. A window manager reads all sizes of a window anew each time it is shown.
[[nodiscard]] QIcon programIcon(int largest = 256);

}  // namespace quillo
