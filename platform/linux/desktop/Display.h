#pragma once

#include <QString>
#include <QWindow>

namespace quillo {

// Whether there is an X server or a Wayland compositor to show anything on. Qt would end the process.
[[nodiscard]] bool displayIsReachable();

// Whether the windows of this session are a Wayland compositor's, be it through Xwayland.
[[nodiscard]] bool isWaylandSession();

// What the windows of this process are shown by.
enum class DisplayChoice {
  ByUser,    // QT_QPA_PLATFORM was set before
  X11,       // the session's own
  Xwayland,  // in a Wayland session, where only windows of X can place themselves
  Wayland,   // there is no Xwayland: the compositor places the windows
};
// Chooses for the application object that is made next, by its environment. Programs that are started later must not
// inherit the choice: restoreEnvironment() takes it back, once the application object is there.
DisplayChoice chooseDisplay();
void restoreEnvironment(DisplayChoice choice);
// For the log.
[[nodiscard]] QString description(DisplayChoice choice);

// Whether somebody draws translucent windows as such. Always so in a Wayland session.
[[nodiscard]] bool compositorIsRunning();

// Asks the window manager to list a window, which is not shown yet, neither in task bars nor in pagers; has to be done
// anew for each showing. Nothing without an X server.
void keepOutOfTaskBar(WId window);

}  // namespace quillo
