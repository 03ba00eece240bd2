#pragma once

#include <QString>

#include <functional>

namespace quillo {

// Broadcasts names, without payload, to every process of the user's session, the sender included.
class DistributedNotifications {
 public:
  virtual ~DistributedNotifications() = default;

  // The one receiver of all broadcasts; called on the main thread.
  virtual void setReceiver(std::function<void(const QString& name)> receiver) = 0;
  // False when the name could not be sent (no session bus); it is then delivered to nobody.
  virtual bool post(const QString& name) = 0;
};

}  // namespace quillo
