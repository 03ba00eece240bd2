#pragma once

#include <QStringView>

namespace quillo {

// Whether windows are light or dark: as the desktop has it, or as somebody has chosen against it.
enum class Look { OfDesktop, Light, Dark };

// As settings have it: "light" or "dark"; anything else leaves it to the desktop.
[[nodiscard]] Look lookFromSetting(QStringView text);

// Gives the application a palette of that look, which every window follows at once; the desktop's own, high contrast
// included, where it is left to that.
void applyLook(Look look);

}  // namespace quillo
