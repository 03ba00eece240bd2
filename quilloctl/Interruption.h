#pragma once

#include <array>
#include <csignal>

namespace quillo::ctl {

// While it lives, Ctrl+C and a request to end do not end the process at once, so that long work can be left in order. A
// second one does.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  [[nodiscard]] static bool isAsked();

 private:
  static constexpr std::array signals{SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, signals.size()> m_before{};
};

}  // namespace quillo::ctl
