#pragma once

#include "foundation/FileDescriptor.h"

#include <functional>
#include <memory>

class QSocketNotifier;

namespace quillo {

// A timer of the kernel on the real-time clock, read by the event loop. Nothing wakes the process before it is due.
class TimerDescriptor {
 public:
  enum class Outcome { Expired, ClockWasSet };

  // Without a descriptor left in the process, isValid() is false and nothing is ever called. The callback may destroy
  // this object.
  explicit TimerDescriptor(std::function<void(Outcome)> callback);
  ~TimerDescriptor();
  TimerDescriptor(const TimerDescriptor&) = delete;
  TimerDescriptor& operator=(const TimerDescriptor&) = delete;

  [[nodiscard]] bool isValid() const { return m_descriptor.isOpen(); }

  // At a moment by the clock, in seconds since 1970, through all settings of the clock. What is past or NaN is
  // due at once; what is beyond the kernel's count (the year 2262) never.
  bool armAt(double secondsSince1970);
  // After so many seconds.
  bool armAfter(double seconds);
  // Never due, but tells when the clock is set, which waking from sleep counts as.
  bool armForClockChanges();

 private:
  void readable();
  bool arm(int flags, double seconds);

  FileDescriptor m_descriptor;
  std::function<void(Outcome)> m_callback;
  std::unique_ptr<QSocketNotifier> m_notifier;
  // Where a callback that is running hears that this object has been destroyed; null while none is.
  bool* m_destroyed{nullptr};
};

}  // namespace quillo
