#pragma once

#include "platform/DistributedNotifications.h"
#include "platform/linux/SessionBus.h"

#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

namespace quillo {

// Whether a name may travel: 1 to 255 characters, none of them a control character or half of a surrogate pair.
[[nodiscard]] bool isNotificationName(const QString& name);

// Broadcasts as a signal on the session bus. Needs a QCoreApplication; works in programs without a window as well.
//
// A name is passed on at once, and when it comes again soon after that, once more a moment later, however often it
// came: it says no more than "look anew". A flood of broadcasts thus costs little more than reading them from the bus.
class SessionBusNotifications final : public QObject, public DistributedNotifications {
  Q_OBJECT

 public:
  SessionBusNotifications();

  void setReceiver(std::function<void(const QString& name)> receiver) override;
  bool post(const QString& name) override;

 private Q_SLOTS:
  void receive(const QString& name);

 private:
  void tell(const QString& name);
  void tellWaiting();

  std::function<void(const QString&)> m_receiver;
  // What was passed on since the pause began, and what waits for its end, in the order in which it came.
  QSet<QString> m_told;
  QStringList m_waiting;
  QTimer m_pause;
  SessionBus m_bus;
};

}  // namespace quillo
