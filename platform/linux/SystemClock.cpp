#include "platform/linux/SystemClock.h"

#include "foundation/Date.h"

namespace quillo {

double SystemClock::secondsSince1970() const {
  return Date::now().timeIntervalSince1970();
}

}  // namespace quillo
