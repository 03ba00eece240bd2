#include "platform/linux/WallClockTimer.h"

#include "foundation/Log.h"
#include "platform/linux/TimerDescriptor.h"

#include <QString>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

class WallClockTimer final : public OneShotTimer {
 public:
  WallClockTimer(double due, std::function<void()> action, const Clock& clock, double waitForNotices)
      : m_due(due),
        m_mayWait(due > clock.secondsSince1970()),
        m_action(std::move(action)),
        m_clock(clock),
        m_waitForNotices(waitForNotices),
        m_timer([this](TimerDescriptor::Outcome) { expired(); }) {
    if (!m_timer.isValid() || !m_timer.armAt(due)) QLLogError(u"Cannot arm a timer: the kernel has none left"_s);
  }

 private:
  void expired() {
    const bool overtaken = m_clock.secondsSince1970() - m_due > WallClockTimerFactory::overtakenAfter;
    if (overtaken && m_mayWait) {
      m_mayWait = false;
      m_timer.armAfter(m_waitForNotices);
      return;
    }
    // Moved out, because the action may destroy this object.
    const auto action = std::exchange(m_action, nullptr);
    if (action) action();
  }

  double m_due;
  bool m_mayWait;
  std::function<void()> m_action;
  const Clock& m_clock;
  double m_waitForNotices;
  TimerDescriptor m_timer;
};

}  // namespace

std::unique_ptr<OneShotTimer> WallClockTimerFactory::schedule(double secondsSince1970, std::function<void()> action) {
  return std::make_unique<WallClockTimer>(secondsSince1970, std::move(action), m_clock, m_waitForNotices);
}

}  // namespace quillo
