#pragma once

#include "platform/DistributedNotifications.h"
#include "platform/linux/SessionBus.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

namespace quillo {

// Whether a name may travel: 1 to 255 characters, none of them a control character or half of a surrogate pair.
[[nodiscard]] bool isNotificationName(const QString& name);

// Broadcasts as a signal on the session bus. Needs a QCoreApplication; works in programs without a window as well.
//
// A name that comes again while it waits to be passed on adds nothing, since it says no more than "look anew". A flood
// of broadcasts thus costs little more than reading them from the bus; what comes while its name is being passed on is
// passed on once more.
class SessionBusNotifications final : public QObject, public DistributedNotifications {
  Q_OBJECT

 public:
  SessionBusNotifications();

  void setReceiver(std::function<void(const QString& name)> receiver) override;
  bool post(const QString& name) override;

 private Q_SLOTS:
  void receive(const QString& name);

 private:
  void passOn();

  std::function<void(const QString&)> m_receiver;
  // What waits, in the order in which it came.
  QStringList m_names;
  QSet<QString> m_waiting;
  // One name a turn of the event loop; of a new round, once its time has come.
  QTimer m_turn;
  qsizetype m_leftOfRound{0};
  QElapsedTimer m_sinceRound;
  SessionBus m_bus;
};

}  // namespace quillo
