#pragma once

#include "config/PersistentPropertyList.h"
#include "foundation/Bundle.h"
#include "platform/UserNotifications.h"

#include <functional>
#include <memory>

namespace quillo {

class AgentEntryWindowController;
class QLXAStatusBarController;
class Sounds;
class Workspace;

// What the delivery of reminders works with. A null pointer is a desktop that lacks the service: what needs it is
// skipped, the rest works. All of it must outlive the delivery.
struct ReminderDeliveryServices {
  // With the quotations.
  Bundle bundle;
  // Asked at each reminder, as both can be replaced; either may answer null.
  std::function<QLXAStatusBarController*()> statusController;
  std::function<std::shared_ptr<AgentEntryWindowController>()> entryWindowController;
  UserNotifications* userNotifications{nullptr};
  Sounds* sounds{nullptr};
  Workspace* workspace{nullptr};
  // See EntryWindowDesktop: a notification then stands for the window, which a click on it opens.
  bool windowsTakeKeyboard{false};
};

// Gives a reminder as the shared settings want it: by the entry window in the reminder mode, by a notification with a
// quotation, and by a sound that goes with either, but is heard once where both are used. There is no sound alone.
// At most one notification of ours stands at a time. Main thread only.
class ReminderDelivery final : public UserNotificationCenterDelegate {
 public:
  // While there is no list, all reads as off.
  ReminderDelivery(PersistentPropertyListSource sharedProperties, ReminderDeliveryServices services);
  ~ReminderDelivery();
  ReminderDelivery(const ReminderDelivery&) = delete;
  ReminderDelivery& operator=(const ReminderDelivery&) = delete;

  void reminderAlarmFired();

  // Leads to a new entry in the main application; while the entry window is open, that one's text is saved and handed
  // over, and the window goes.
  void didActivateNotification(const UserNotification& notification) override;
  // Also while our own window is the active one.
  bool shouldPresentNotification(const UserNotification& notification) override;
  // Where it stood for the window, that comes after all.
  void didFailToShowNotification(const UserNotification& notification) override;

 private:
  [[nodiscard]] bool isOn(QLatin1StringView key) const;
  void openWindow();
  // The notification's identifier; 0 where there are none.
  quint64 sendToNotificationCenter(bool withSound);

  PersistentPropertyListSource m_sharedProperties;
  ReminderDeliveryServices m_services;
  quint64 m_standIn{0};  // the notification that stands for the window
};

}  // namespace quillo
