#pragma once

#include <QWindow>

#include <functional>

namespace quillo {

// Who decides where a window stands.
enum class WindowPlacement {
  Program,        // it stands where it is put
  WindowManager,  // it is asked for the place, and may choose another
  Compositor,     // the program is not even told
};

// What the entry window asks of the desktop; each may be empty.
struct EntryWindowDesktop {
  // Whether translucent windows are drawn, which is taken for granted else; asked each time the window is shown.
  std::function<bool()> isComposited{};
  // Called before the window shows, to keep it out of lists of open windows: it belongs to the icon.
  std::function<void(WId)> keepOutOfTaskBar{};
  // Called before the window shows and is to leave the keyboard where it is.
  std::function<void(QWindow&)> leaveKeyboard{};
  // A window cannot show without taking the keyboard: a reminder would take it from somebody who is typing.
  bool windowsTakeKeyboard{false};
  // The arrow is drawn only where it points at the icon.
  WindowPlacement placement{WindowPlacement::Program};
};

}  // namespace quillo
