#include "app/ReminderDelivery.h"

#include "app/Messages.h"
#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/QLXAStatusBarController.h"
#include "platform/Sounds.h"
#include "platform/Workspace.h"

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

static const QString soundName = u"quillo-reminder"_s;

ReminderDelivery::ReminderDelivery(PersistentPropertyListSource sharedProperties, ReminderDeliveryServices services)
    : m_sharedProperties(std::move(sharedProperties)), m_services(std::move(services)) {}

ReminderDelivery::~ReminderDelivery() {
  if (m_services.userNotifications) m_services.userNotifications->setDelegate(nullptr);
}

bool ReminderDelivery::isOn(QLatin1StringView key) const {
  PersistentPropertyList* list = m_sharedProperties();
  const auto value = list ? list->valueForKey(key) : std::nullopt;
  return value && value->boolValue();
}

void ReminderDelivery::reminderAlarmFired() {
  const bool playSound = isOn(Key::remindersPlaySound);
  const bool openMenuBar = isOn(Key::remindersOpenMenuBar);
  const bool sendToNotificationCenter = isOn(Key::remindersSendToNotificationCenter);
  const bool isStoodFor = openMenuBar && m_services.windowsTakeKeyboard && m_services.userNotifications;
  m_standIn = 0;
  bool soundWasPlayed = false;
  if (openMenuBar) {
    if (!isStoodFor) openWindow();
    if (playSound) {
      if (m_services.sounds) m_services.sounds->playSoundNamed(soundName);
      soundWasPlayed = true;
    }
  }
  if (sendToNotificationCenter || isStoodFor) {
    const quint64 sent = this->sendToNotificationCenter(playSound && !soundWasPlayed);
    if (isStoodFor) m_standIn = sent;
  }
}

void ReminderDelivery::openWindow() {
  m_standIn = 0;
  if (QLXAStatusBarController* controller = m_services.statusController())
    controller->showEntryWindowInMode(EntryWindowModeReminder);
}

quint64 ReminderDelivery::sendToNotificationCenter(bool withSound) {
  if (!m_services.userNotifications) return 0;
  m_services.userNotifications->setDelegate(this);
  UserNotification notification;
  notification.title = u"Journal Reminder"_s;
  notification.informativeText = Messages(m_services.bundle).nextMessage();
  if (withSound) notification.soundName = soundName;
  m_services.userNotifications->removeAllDeliveredNotifications();
  return m_services.userNotifications->deliverNotification(notification);
}

void ReminderDelivery::didActivateNotification(const UserNotification& notification) {
  m_services.userNotifications->removeDeliveredNotification(notification.identifier);
  QLXAStatusBarController* controller = m_services.statusController();
  if (!controller || !controller->isShowingEntryWindow()) {
    if (m_standIn != 0 && notification.identifier == m_standIn) return openWindow();
    if (m_services.workspace) m_services.workspace->openURL(QUrl(u"quillo://post"_s));
    return;
  }
  // Held: saving may show an alert, and the controller can be replaced meanwhile.
  if (const auto window = m_services.entryWindowController()) window->openJournalButtonClicked();
  if (QLXAStatusBarController* still = m_services.statusController()) still->hideEntryWindow();
}

void ReminderDelivery::didFailToShowNotification(const UserNotification& notification) {
  if (m_standIn != 0 && notification.identifier == m_standIn) openWindow();
}

bool ReminderDelivery::shouldPresentNotification(const UserNotification&) {
  return true;
}

}  // namespace quillo
