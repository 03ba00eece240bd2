#pragma once

#include "platform/OutsideClicks.h"

#include <memory>

namespace quillo {

// Clicks outside by way of the X input extension: raw button presses, which the server tells whoever asks, whatever
// window they go to. It uses a connection of its own, made on first use; while nobody listens the server sends nothing.
// Without an X server, without version 2 of the extension, or in a Wayland session there is no monitor.
class RawButtonPresses final : public OutsideClicks {
 public:
  RawButtonPresses();
  ~RawButtonPresses() override;

  [[nodiscard]] std::unique_ptr<Registration> addGlobalMonitor(std::function<void()> handler) override;

 private:
  class Connection;
  std::shared_ptr<Connection> m_connection;
};

}  // namespace quillo
