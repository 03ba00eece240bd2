#pragma once

#include "foundation/NotificationCenter.h"

namespace quillo {

class DistributedNotifications;

// The notification centre that reaches every process of the user's session. Names only: no object, no payload. The
// poster receives its own notices. Without a transport, or while the transport cannot send, it works inside the
// process and says so once in the log.
class DistributedNotificationCenter final : public NotificationCenter {
 public:
  static DistributedNotificationCenter& sharedCenter();

  DistributedNotificationCenter();
  ~DistributedNotificationCenter() override;

  // The transport must outlive its use; null takes it away.
  void setTransport(DistributedNotifications* transport);

  void postNotification(const QString& name, const void* object = nullptr) override;

 private:
  DistributedNotifications* m_transport{nullptr};
  bool m_saidLocalOnly{false};
};

}  // namespace quillo
