#include "controls/Coordinates.h"

#include <QGuiApplication>
#include <QScreen>

namespace quillo {

double mainScreenHeight() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->geometry().height() : 0;
}

}  // namespace quillo
