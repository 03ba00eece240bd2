#pragma once

#include <QColor>
#include <QFont>

class QPalette;

namespace quillo {

// How the links of the About window look, in its credits and as the button "Legal".
struct LinkStyle {
  QFont font;
  QColor foregroundColor;
  // Extra points between two lines.
  static constexpr double lineSpacing = 3.0;

  // On windows of that palette: the deep blue of the house, and on a dark one a lighter tone of it, as the deep one
  // could not be read there.
  [[nodiscard]] static LinkStyle forPalette(const QPalette& palette);
};

// The face of the small print, "Lucida Grande" 9 or the nearest that is there.
[[nodiscard]] QFont aboutFont();
// Whether text on the palette's windows is light on dark.
[[nodiscard]] bool isDark(const QPalette& palette);

}  // namespace quillo
