#include "platform/linux/TimerDescriptor.h"

#include <QSocketNotifier>

#include <errno.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cmath>
#include <utility>

namespace quillo {

namespace {

// The kernel counts nanoseconds in 63 bits; a little less than its last second.
constexpr double furthestSecond = 9'223'372'000.0;

timespec timespecOf(double seconds) {
  // All zero would disarm the timer, and a negative value is an error; both mean "now", and so does NaN.
  static constexpr timespec soonest{.tv_sec = 0, .tv_nsec = 1};
  if (!(seconds > 0)) return soonest;
  const double capped = std::fmin(seconds, furthestSecond);
  const double whole = std::floor(capped);
  timespec result{.tv_sec = static_cast<time_t>(whole), .tv_nsec = static_cast<long>((capped - whole) * 1e9)};
  return result.tv_sec == 0 && result.tv_nsec == 0 ? soonest : result;
}

}  // namespace

TimerDescriptor::TimerDescriptor(std::function<void(Outcome)> callback)
    : m_descriptor(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)), m_callback(std::move(callback)) {
  if (!isValid()) return;
  m_notifier = std::make_unique<QSocketNotifier>(m_descriptor.number(), QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { readable(); });
}

TimerDescriptor::~TimerDescriptor() {
  if (!m_notifier) return;
  m_notifier->setEnabled(false);
  if (!m_destroyed) return;
  // The notifier is in the middle of the call that led here.
  *m_destroyed = true;
  m_notifier->disconnect();
  m_notifier.release()->deleteLater();
}

bool TimerDescriptor::armAt(double secondsSince1970) {
  return arm(TFD_TIMER_ABSTIME, secondsSince1970);
}

bool TimerDescriptor::armAfter(double seconds) {
  return arm(0, seconds);
}

bool TimerDescriptor::armForClockChanges() {
  return arm(TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, furthestSecond);
}

bool TimerDescriptor::arm(int flags, double seconds) {
  const itimerspec when{.it_interval = {}, .it_value = timespecOf(seconds)};
  return ::timerfd_settime(m_descriptor.number(), flags, &when, nullptr) == 0;
}

void TimerDescriptor::readable() {
  quint64 expirations = 0;
  const ssize_t size = ::read(m_descriptor.number(), &expirations, sizeof expirations);
  if (size < 0 && errno != ECANCELED) return;  // somebody re-armed it in between
  // A copy, which outlives this object when the callback destroys it.
  const auto callback = m_callback;
  bool destroyed = false;
  bool* const outer = std::exchange(m_destroyed, &destroyed);
  callback(size < 0 ? Outcome::ClockWasSet : Outcome::Expired);
  if (!destroyed) {
    m_destroyed = outer;
  } else if (outer) {
    *outer = true;
  }
}

}  // namespace quillo
