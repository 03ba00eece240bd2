#include "app/switches/RemindersManager.h"

#include "app/switches/AgentManager.h"
#include "app/switches/LazySingleton.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/UserDefaults.h"

#include <utility>

namespace quillo {

RemindersManager& RemindersManager::sharedManager() {
  return LazySingleton<RemindersManager>::get(
      [] { initialize(QuilloConfig::sharedConfig().groupProperties(), UserDefaults::standardUserDefaults()); },
      [] {
        return std::make_unique<RemindersManager>([] { return QuilloConfig::sharedConfig().groupProperties(); },
                                                  DistributedNotificationCenter::sharedCenter(),
                                                  &AgentManager::sharedManager);
      });
}

void RemindersManager::initialize(PersistentPropertyList* sharedPrefs, UserDefaults& defaults) {
  if (!sharedPrefs) return;
  const auto older = defaults.objectForKey(Key::remindersEnabled);
  if (older && !sharedPrefs->valueForKey(Key::remindersEnabled)) {
    sharedPrefs->setValueForKey(older, Key::remindersEnabled);
    defaults.removeObjectForKey(Key::remindersEnabled);
  }
  if (!sharedPrefs->valueForKey(Key::remindersEnabled)) sharedPrefs->setBoolForKey(true, Key::remindersEnabled);
}

RemindersManager::RemindersManager(PersistentPropertyListSource sharedPrefs, NotificationCenter& distributedCenter,
                                   AgentManagerProvider agentManager)
    : m_sharedPrefs(std::move(sharedPrefs)),
      m_distributedCenter(distributedCenter),
      m_agentManager(std::move(agentManager)),
      m_observation(m_distributedCenter.observe(Notice::remindersManagerValuesDidChange,
                                                [this](const Notification&) { reminderSettingsDidChange(); })) {}

bool RemindersManager::remindersAreEnabled() const {
  const PersistentPropertyList* list = m_sharedPrefs();
  return list && list->boolForKey(Key::remindersEnabled);
}

void RemindersManager::setRemindersAreEnabled(bool enabled) {
  if (PersistentPropertyList* list = m_sharedPrefs()) list->setBoolForKey(enabled, Key::remindersEnabled);
  if (enabled) enableAgent();
  m_distributedCenter.postNotification(Notice::remindersManagerValuesDidChange);
}

void RemindersManager::enableAgent() {
  m_agentManager().setShouldShowInMenuBar(true);
}

void RemindersManager::reminderSettingsDidChange() {
  willChangeValueForKey(remindersAreEnabledKeyPath);
  if (PersistentPropertyList* list = m_sharedPrefs()) list->synchronize();
  didChangeValueForKey(remindersAreEnabledKeyPath);
}

}  // namespace quillo
