#pragma once

#include "platform/Clock.h"
#include "platform/OneShotTimer.h"

namespace quillo {

// Timers of the kernel on the wall clock, from the past to centuries away; between arming and firing the process
// sleeps.
//
// When the machine sleeps through the moment or the clock is set past it, the kernel fires at the waking or setting.
// Whoever hears of that event may want to cancel or re-arm, and its notice may be behind the timer: a timer that fires
// much later than it was due, though armed in time, acts a little later still, unless it was cancelled.
class WallClockTimerFactory final : public OneShotTimerFactory {
 public:
  // Seconds beyond which a timer counts as overtaken.
  static constexpr double overtakenAfter = 2.0;

  // The clock, by which it is known what is late, must outlive the factory and its timers. `waitForNotices`: seconds
  // that an overtaken timer waits.
  explicit WallClockTimerFactory(const Clock& clock, double waitForNotices = 1.0)
      : m_clock(clock), m_waitForNotices(waitForNotices) {}

  [[nodiscard]] std::unique_ptr<OneShotTimer> schedule(double secondsSince1970, std::function<void()> action) override;

 private:
  const Clock& m_clock;
  double m_waitForNotices;
};

}  // namespace quillo
