#pragma once

class QWindow;

namespace quillo {

// Asks that a window, which is made and about to show, is not given the keyboard until the pointer is over it. For
// Xwayland: not every compositor goes by the time of the user's last action, which X window managers go by, but a
// window that takes no keys gets none. Nothing without an X server.
void leaveKeyboard(QWindow& window);

}  // namespace quillo
