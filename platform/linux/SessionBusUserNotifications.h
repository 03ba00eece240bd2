#pragma once

#include "platform/UserNotifications.h"
#include "platform/linux/SessionBus.h"

#include <QObject>

#include <list>
#include <memory>

class QDBusMessage;

namespace quillo {

class Sounds;

// Notifications by the desktop's notification server (org.freedesktop.Notifications). Servers bring no sounds that can
// be relied on: that of a notification is played here, when it is delivered, server or not. Needs a QCoreApplication;
// the session bus is first used at the first delivery.
//
// A server that is started again knows nothing of what the one before it showed, and counts from the start: what is
// said of a notification counts only when the server says so that took it, and is only asked of that one.
class SessionBusUserNotifications final : public QObject, public UserNotifications {
  Q_OBJECT

 public:
  // `icon` is a name of the icon theme, also that of the program's desktop file. The sounds must outlive the object.
  SessionBusUserNotifications(QString icon, Sounds& sounds);
  ~SessionBusUserNotifications() override;

  void setDelegate(UserNotificationCenterDelegate* delegate) override { m_delegate = delegate; }
  quint64 deliverNotification(const UserNotification& notification) override;
  void removeDeliveredNotification(quint64 identifier) override;
  void removeAllDeliveredNotifications() override;

 private Q_SLOTS:
  void actionInvoked(uint number, const QString& action, const QDBusMessage& signal);
  void notificationClosed(uint number, uint reason, const QDBusMessage& signal);

 private:
  struct Delivered;
  using Place = std::list<Delivered>::iterator;

  void askForCapabilities(quint64 identifier);
  void notify(quint64 identifier, const QStringList& capabilities);
  void wasNotified(quint64 identifier, const QDBusMessage& answer);
  // The server's answer comes to `then`, an error too, on a later turn of the event loop.
  void call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> then);
  void failed(const UserNotification& notification, const QString& reason);
  void withdraw(Place place);
  [[nodiscard]] Place find(quint64 identifier);
  [[nodiscard]] Place find(const QString& server, uint number);

  const QString m_icon;
  Sounds& m_sounds;
  UserNotificationCenterDelegate* m_delegate{nullptr};
  std::unique_ptr<SessionBus> m_bus;
  std::list<Delivered> m_delivered;
  quint64 m_lastIdentifier{0};
};

}  // namespace quillo
