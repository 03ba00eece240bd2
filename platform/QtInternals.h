#pragma once

#include <QLatin1StringView>

// What this program takes from inside Qt, where nothing public tells the same: names of Qt 6.4, which another version
// may change without a word. Nothing fails to build then, and each says what is lost; the desktop tests notice the loss
// of the first two.
namespace quillo::QtInternals {

// The class of the window that shows a QSystemTrayIcon in an X tray. Without it the icon's place and its panel's colour
// are unknown, as in a tray that draws icons itself; and the hidden entry window's alerts may hang on the icon.
inline constexpr const char* trayIconWindow = "QSystemTrayIconSys";

// A property of QWindow: whether the X window is shown without taking the keyboard. Qt sets it only when it makes the
// window. Without it an entry window that was once opened by hand takes the keyboard when a reminder opens it.
inline constexpr const char* showWithoutActivating = "_q_showWithoutActivating";

// The names of two items in the context menu of a text view. Without them these items undo and redo by Qt's own steps,
// and some of those change nothing that can be seen.
inline constexpr QLatin1StringView undoItem{"edit-undo"};
inline constexpr QLatin1StringView redoItem{"edit-redo"};

// How Qt's messages begin that the connection to the X server or the Wayland compositor is gone, before it ends the
// process. Without them what was typed in the last two seconds is lost then.
inline constexpr QLatin1StringView displayLossMessages[] = {
    QLatin1StringView{"The X11 connection broke"}, QLatin1StringView{"The Wayland connection broke"},
    QLatin1StringView{"The Wayland connection experienced a fatal error"}};

}  // namespace quillo::QtInternals
