#pragma once

#include "platform/Clock.h"

namespace quillo {

// The kernel's real-time clock.
class SystemClock final : public Clock {
 public:
  [[nodiscard]] double secondsSince1970() const override;
};

}  // namespace quillo
