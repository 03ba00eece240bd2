#pragma once

#include <QApplication>
#include <QPalette>
#include <QWidget>

namespace quillo {

// The palettes of a light and a dark desktop.
inline QPalette desktopPalette(bool isDark) {
  const QColor ground = isDark ? QColor(0x24272c) : QColor(0xf4f2ec);
  QPalette palette(isDark ? QColor(0x3a3e45) : QColor(0xefece4), ground);
  return palette;
}

// Saves what the widget shows below $QUILLO_PICTURES, for people to look at.
inline void savePicture(QWidget& widget, const QString& name) {
  const QString folder = qEnvironmentVariable("QUILLO_PICTURES");
  if (!folder.isEmpty()) widget.grab().save(folder + u'/' + name + QStringLiteral(".png"));
}

}  // namespace quillo
