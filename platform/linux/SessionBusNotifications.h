#pragma once

#include "platform/DistributedNotifications.h"
#include "platform/linux/SessionBus.h"

#include <QObject>

namespace quillo {

// Whether a name may travel: 1 to 255 characters, none of them a control character or half of a surrogate pair.
[[nodiscard]] bool isNotificationName(const QString& name);

// Broadcasts as a signal on the session bus. Needs a QCoreApplication; works in programs without a window as well.
class SessionBusNotifications final : public QObject, public DistributedNotifications {
  Q_OBJECT

 public:
  SessionBusNotifications();

  void setReceiver(std::function<void(const QString& name)> receiver) override;
  bool post(const QString& name) override;

 private Q_SLOTS:
  void receive(const QString& name);

 private:
  std::function<void(const QString&)> m_receiver;
  SessionBus m_bus;
};

}  // namespace quillo
