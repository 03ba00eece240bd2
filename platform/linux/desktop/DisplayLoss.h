#pragma once

#include <functional>

namespace quillo {

// Tells when the X server or the Wayland compositor has gone, while there is still time to save: Qt ends the process
// right after, without returning to the event loop. One at a time, made after everything else that handles Qt's
// messages.
class DisplayLoss {
 public:
  // `save` is called on the main thread, once, and has two seconds; it must show nothing.
  explicit DisplayLoss(std::function<void()> save);
  ~DisplayLoss();
  DisplayLoss(const DisplayLoss&) = delete;
  DisplayLoss& operator=(const DisplayLoss&) = delete;
};

}  // namespace quillo
