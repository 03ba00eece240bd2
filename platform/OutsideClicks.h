#pragma once

#include "platform/Registration.h"

#include <functional>
#include <memory>

namespace quillo {

// Presses of the left mouse button that go to other programs. Those on this program's own windows, its icon in an X
// tray among them, are not told.
class OutsideClicks {
 public:
  virtual ~OutsideClicks() = default;

  // Calls `handler` from the event loop for each press, while the registration lives. Null where the desktop shows a
  // program nobody's input but its own.
  [[nodiscard]] virtual std::unique_ptr<Registration> addGlobalMonitor(std::function<void()> handler) = 0;
};

}  // namespace quillo
