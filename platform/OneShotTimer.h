#pragma once

#include <functional>
#include <memory>

namespace quillo {

// A timer that is armed until it has fired; destroying it cancels it.
class OneShotTimer {
 public:
  virtual ~OneShotTimer() = default;
};

// Arms timers for a moment by the wall clock, which is followed when it is set and while the machine sleeps.
class OneShotTimerFactory {
 public:
  virtual ~OneShotTimerFactory() = default;
  // Calls `action` once, from the event loop of this thread, when the clock reaches `secondsSince1970`; at the next
  // turn of the loop when that is past or NaN. The action may destroy its timer.
  [[nodiscard]] virtual std::unique_ptr<OneShotTimer> schedule(double secondsSince1970,
                                                               std::function<void()> action) = 0;
};

}  // namespace quillo
