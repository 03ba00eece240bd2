#include "platform/linux/SystemClock.h"

#include <time.h>

namespace quillo {

double SystemClock::secondsSince1970() const {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace quillo
