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

ReminderDelivery::ReminderDelivery(PersistentPropertyListSource sharedProperties, ReminderStage stage)
    : m_sharedProperties(std::move(sharedProperties)), m_stage(std::move(stage)) {}

ReminderDelivery::~ReminderDelivery() {
  if (m_stage.userNotifications) m_stage.userNotifications->setDelegate(nullptr);
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
  bool soundWasPlayed = false;
  if (openMenuBar) {
    if (QLXAStatusBarController* controller = m_stage.statusController())
      controller->showEntryWindowInMode(EntryWindowModeReminder);
    if (playSound) {
      if (m_stage.sounds) m_stage.sounds->playSoundNamed(soundName);
      soundWasPlayed = true;
    }
  }
  if (sendToNotificationCenter) this->sendToNotificationCenter(playSound && !soundWasPlayed);
}

void ReminderDelivery::sendToNotificationCenter(bool withSound) {
  if (!m_stage.userNotifications) return;
  m_stage.userNotifications->setDelegate(this);
  UserNotification notification;
  notification.title = u"Journal Reminder"_s;
  notification.informativeText = Messages().nextMessage();
  if (withSound) notification.soundName = soundName;
  m_stage.userNotifications->removeAllDeliveredNotifications();
  m_stage.userNotifications->deliverNotification(notification);
}

void ReminderDelivery::didActivateNotification(const UserNotification& notification) {
  m_stage.userNotifications->removeDeliveredNotification(notification.identifier);
  QLXAStatusBarController* controller = m_stage.statusController();
  if (!controller || !controller->isShowingEntryWindow()) {
    if (m_stage.workspace) m_stage.workspace->openURL(QUrl(u"quillo://post"_s));
    return;
  }
  // Held: saving may show an alert, and the controller can be replaced meanwhile.
  if (const auto window = m_stage.entryWindowController()) window->openJournalButtonClicked();
  if (QLXAStatusBarController* still = m_stage.statusController()) still->hideEntryWindow();
}

bool ReminderDelivery::shouldPresentNotification(const UserNotification&) {
  return true;
}

}  // namespace quillo
