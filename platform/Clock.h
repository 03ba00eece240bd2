#pragma once

namespace quillo {

// What time it is.
class Clock {
 public:
  virtual ~Clock() = default;
  // Seconds since 1970-01-01T00:00:00Z by the clock that the user can set.
  [[nodiscard]] virtual double secondsSince1970() const = 0;
};

}  // namespace quillo
