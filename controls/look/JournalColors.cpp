#include "controls/look/JournalColors.h"

#include <QGuiApplication>

namespace quillo {

namespace {

const JournalColors light{.ground = QColor(0xf4f2ec),
                          .bar = QColor(0xefece4),
                          .sidebar = QColor(0xe9e6de),
                          .list = QColor(0xfbfaf7),
                          .paper = QColor(0xffffff),
                          .line = QColor(0xdedad0),
                          .text = QColor(0x2b2e33),
                          .dim = QColor(0x7d7a72),
                          .accent = QColor(0x2f7fd8),
                          .accentText = QColor(0xffffff),
                          .match = QColor(0xffe9a8),
                          .shade = QColor(0xd8d4c8)};

const JournalColors dark{.ground = QColor(0x24272c),
                         .bar = QColor(0x2a2d33),
                         .sidebar = QColor(0x1f2226),
                         .list = QColor(0x272a30),
                         .paper = QColor(0x2c3036),
                         .line = QColor(0x3a3e45),
                         .text = QColor(0xe6e4de),
                         .dim = QColor(0x92959b),
                         .accent = QColor(0x5aa2f0),
                         .accentText = QColor(0xffffff),
                         .match = QColor(0x6a5a1e),
                         .shade = QColor(0x34383e)};

// Themes of high contrast put pure white on pure black or the opposite.
bool isHighContrast(const QPalette& palette) {
  const QColor ground = palette.color(QPalette::Window);
  const QColor text = palette.color(QPalette::WindowText);
  return (ground == QColor(Qt::black) && text == QColor(Qt::white)) ||
         (ground == QColor(Qt::white) && text == QColor(Qt::black) && palette.color(QPalette::Base) == ground &&
          palette.color(QPalette::Button) == ground);
}

JournalColors ofDesktop(const QPalette& palette) {
  const QColor ground = palette.color(QPalette::Window);
  const QColor text = palette.color(QPalette::WindowText);
  const QColor accent = palette.color(QPalette::Highlight);
  return {.ground = ground,
          .bar = ground,
          .sidebar = ground,
          .list = ground,
          .paper = ground,
          .line = text,
          .text = text,
          .dim = text,
          .accent = accent,
          .accentText = palette.color(QPalette::HighlightedText),
          .match = blended(accent, ground, 0.5),
          .shade = blended(text, ground, 0.3)};
}

}  // namespace

QColor blended(const QColor& one, const QColor& other, double part) {
  const auto mix = [part](float a, float b) { return static_cast<float>(a * part + b * (1 - part)); };
  return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                          mix(one.blueF(), other.blueF()));
}

JournalColors JournalColors::current() {
  return forPalette(QGuiApplication::palette());
}

JournalColors JournalColors::forPalette(const QPalette& palette) {
  if (isHighContrast(palette)) return ofDesktop(palette);
  return palette.color(QPalette::Window).lightness() < 128 ? dark : light;
}

}  // namespace quillo
