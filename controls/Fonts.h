#pragma once

#include <QFont>
#include <QStringList>

namespace quillo {

// The faces of the interface, in one place. Sizes are points, and a point is a device-independent pixel everywhere in
// the program, whatever resolution the screen claims: the artwork is measured the same way.

// "Helvetica Neue" where it is installed, otherwise the nearest of the usual interface faces.
[[nodiscard]] QStringList textFontFamilies();
[[nodiscard]] QFont textFont(int points, QFont::Weight weight = QFont::Normal);

}  // namespace quillo
