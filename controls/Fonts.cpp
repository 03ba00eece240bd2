#include "controls/Fonts.h"

namespace quillo {

using namespace Qt::StringLiterals;

QStringList textFontFamilies() {
  return {u"Helvetica Neue"_s, u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s};
}

QFont textFont(int points, QFont::Weight weight) {
  QFont font;
  font.setFamilies(textFontFamilies());
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(qMax(1, points));
  font.setWeight(weight);
  // Positions by the outline, not by the pixel grid: the same line breaks at every scale of the screen.
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

}  // namespace quillo
