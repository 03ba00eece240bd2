#pragma once

#include "platform/HotKeys.h"

#include <QString>

#include <memory>

namespace quillo {

class XkbKeyboardLayouts;

// The service that this desktop has for hot keys: the X server's, in a Wayland session that of the desktop portal.
// `description` tells the user what the shortcut does, where the desktop asks; the layouts must outlive the service.
// Needs a QGuiApplication.
[[nodiscard]] std::unique_ptr<HotKeys> hotKeysOfDesktop(const QString& description, XkbKeyboardLayouts& layouts);

}  // namespace quillo
