#include "controls/look/ChosenLook.h"

#include "controls/look/JournalColors.h"

#include <QApplication>
#include <QPalette>

namespace quillo {

namespace {

QPalette paletteOf(bool isDark) {
  // Of any palette that is as light or dark.
  const JournalColors colors = JournalColors::forPalette(QPalette(isDark ? QColor(0x202020) : QColor(0xe0e0e0)));
  QPalette palette(colors.text, colors.bar, colors.paper, colors.line, colors.shade, colors.text, colors.accentText,
                   colors.paper, colors.ground);
  palette.setColor(QPalette::AlternateBase, colors.list);
  palette.setColor(QPalette::Highlight, colors.accent);
  palette.setColor(QPalette::HighlightedText, colors.accentText);
  palette.setColor(QPalette::Link, colors.accent);
  palette.setColor(QPalette::LinkVisited, colors.accent);
  palette.setColor(QPalette::PlaceholderText, colors.dim);
  palette.setColor(QPalette::ToolTipBase, colors.paper);
  palette.setColor(QPalette::ToolTipText, colors.text);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, colors.dim);
  return palette;
}

}  // namespace

Look lookFromSetting(QStringView text) {
  if (text == u"light") return Look::Light;
  return text == u"dark" ? Look::Dark : Look::OfDesktop;
}

void applyLook(Look look) {
  static Look applied = Look::OfDesktop;
  if (look == applied) return;
  applied = look;
  // An empty one is the platform's again.
  QApplication::setPalette(look == Look::OfDesktop ? QPalette() : paletteOf(look == Look::Dark));
}

}  // namespace quillo
