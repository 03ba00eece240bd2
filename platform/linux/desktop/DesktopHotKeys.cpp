#include "platform/linux/desktop/DesktopHotKeys.h"

#include "platform/linux/PortalHotKeys.h"
#include "platform/linux/XkbKeyboardLayouts.h"
#include "platform/linux/desktop/Display.h"
#include "platform/linux/desktop/X11HotKeys.h"

#include <QGuiApplication>

namespace quillo {

std::unique_ptr<HotKeys> hotKeysOfDesktop(const QString& description, XkbKeyboardLayouts& layouts) {
  // A key grabbed from Xwayland is heard over the windows of X programs only, and the grab is granted all the same.
  if (!isWaylandSession() && X11HotKeys::isAvailable()) return std::make_unique<X11HotKeys>();
  return std::make_unique<PortalHotKeys>(description, QGuiApplication::desktopFileName(),
                                         [&layouts](quint16 keyCode) { return layouts.keysymName(keyCode); });
}

}  // namespace quillo
