#pragma once

#include <QString>
#include <QWindow>

namespace quillo {

// For the making of the application object: where that finds no X server or Wayland compositor to show anything on, the
// process says `line` on standard error and ends with code 1. Qt by itself ends it by a crash. One at a time.
class DisplayRequirement {
 public:
  // The text must outlive the object. Ends the process at once where no display is even named.
  explicit DisplayRequirement(const char* line);
  ~DisplayRequirement();
  DisplayRequirement(const DisplayRequirement&) = delete;
  DisplayRequirement& operator=(const DisplayRequirement&) = delete;
};

// Whether the windows of this session are a Wayland compositor's, be it through Xwayland.
[[nodiscard]] bool isWaylandSession();

// Whether windows are shown through an X server, be it Xwayland. Needs the application object.
[[nodiscard]] bool showsThroughX();

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
