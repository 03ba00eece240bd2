#pragma once

#include "platform/Clock.h"
#include "platform/OneShotTimer.h"

#include <algorithm>
#include <vector>

namespace quillo {

// A clock and its timers, moved by the test.
class FakeTimers final : public Clock, public OneShotTimerFactory {
 public:
  [[nodiscard]] double secondsSince1970() const override { return m_now; }

  std::unique_ptr<OneShotTimer> schedule(double secondsSince1970, std::function<void()> action) override {
    auto timer = std::make_unique<Timer>(*this, secondsSince1970, std::move(action));
    m_armed.push_back(timer.get());
    return timer;
  }

  // When the armed timers are due, oldest first.
  [[nodiscard]] std::vector<double> due() const {
    std::vector<double> moments;
    for (const Timer* timer : m_armed) moments.push_back(timer->due);
    return moments;
  }

  // Only the clock moves, as during sleep or when it is set.
  void setTime(double secondsSince1970) { m_now = secondsSince1970; }

  // The clock runs on to `secondsSince1970`, and every timer due by then fires at its time, in the order of arming.
  void runUntil(double secondsSince1970) {
    // Ends: a test's timers lead forward; ten thousand mean that they do not.
    for (int fired = 0; fired < 10'000; ++fired) {
      const auto next = std::min_element(m_armed.begin(), m_armed.end(),
                                         [](const Timer* a, const Timer* b) { return a->due < b->due; });
      if (next == m_armed.end() || (*next)->due > secondsSince1970) break;
      Timer& timer = **next;
      m_now = std::max(m_now, timer.due);
      m_armed.erase(next);
      const auto action = timer.action;
      action();
    }
    m_now = std::max(m_now, secondsSince1970);
  }

 private:
  struct Timer final : OneShotTimer {
    Timer(FakeTimers& owner, double when, std::function<void()> what)
        : timers(owner), due(when), action(std::move(what)) {}
    ~Timer() override { std::erase(timers.m_armed, this); }
    FakeTimers& timers;
    double due;
    std::function<void()> action;
  };

  double m_now{0};
  std::vector<Timer*> m_armed;
};

}  // namespace quillo
