#pragma once

#include <functional>

namespace quillo {

enum class SystemEvent { ClockDidChange, TimeZoneDidChange, DidWake };

// Tells when the clock was set, the user's time zone became another one, or the machine woke from sleep. An event may
// come twice.
class SystemEvents {
 public:
  virtual ~SystemEvents() = default;
  // The one receiver, called from the event loop of this thread.
  virtual void setReceiver(std::function<void(SystemEvent)> receiver) = 0;
};

}  // namespace quillo
