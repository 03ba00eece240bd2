#pragma once

#include <QString>
#include <QtGlobal>

namespace quillo {

// A notice to the user, shown by the desktop outside of our windows.
struct UserNotification {
  // Tells the notifications of this process apart; given at the delivery.
  quint64 identifier{0};
  QString title;
  QString informativeText;
  // A sound of the program's own, heard when the notification is delivered; empty for a silent one.
  QString soundName;

  bool operator==(const UserNotification&) const = default;
};

// Hears what becomes of notifications. Called from the event loop.
class UserNotificationCenterDelegate {
 public:
  // The user clicked one that this process delivered and has not removed.
  virtual void didActivateNotification(const UserNotification& notification) = 0;
  // Asked at each delivery: no keeps the notification off the screen, and nothing else.
  virtual bool shouldPresentNotification(const UserNotification& notification) = 0;

  // The desktop did not take it: there is no service, or it answered with an error.
  virtual void didFailToShowNotification(const UserNotification& notification) = 0;

 protected:
  ~UserNotificationCenterDelegate() = default;
};

// The desktop's user notifications. Nothing here waits for the desktop: a service that is missing, busy, or dies in the
// middle costs the notification and nothing else. Main thread only.
class UserNotifications {
 public:
  virtual ~UserNotifications() = default;

  // Not owned, and must outlive its use; null takes it away.
  virtual void setDelegate(UserNotificationCenterDelegate* delegate) = 0;
  // Answers the identifier that it gave to the notification.
  virtual quint64 deliverNotification(const UserNotification& notification) = 0;
  // Takes it away where it still stands. One of another process is never touched.
  virtual void removeDeliveredNotification(quint64 identifier) = 0;
  // All that this process delivered.
  virtual void removeAllDeliveredNotifications() = 0;
};

}  // namespace quillo
