#include "about/LinkStyle.h"

#include "controls/Fonts.h"

#include <QPalette>

namespace quillo {

QFont aboutFont() {
  QFont font = textFont(9);
  font.setFamilies(QStringList{QStringLiteral("Lucida Grande")} + textFontFamilies());
  return font;
}

bool isDark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

LinkStyle LinkStyle::forPalette(const QPalette& palette) {
  return {aboutFont(), isDark(palette) ? QColor(106, 196, 226) : QColor(6, 102, 133)};
}

}  // namespace quillo
