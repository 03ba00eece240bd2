#include "app/switches/AgentManager.h"

#include "app/switches/LazySingleton.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "foundation/Bundle.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/UserDefaults.h"

#include <utility>

namespace quillo {

static LoginItemServices& sharedLoginItemServices() {
  static LoginItemServices services;
  return services;
}

void AgentManager::setSharedLoginItemServices(LoginItemServices services) {
  sharedLoginItemServices() = services;
}

AgentManager& AgentManager::sharedManager() {
  return LazySingleton<AgentManager>::get(
      [] {
        initialize(Bundle::mainBundle().bundleIdentifier(), QuilloConfig::sharedConfig().groupProperties(),
                   UserDefaults::standardUserDefaults(), DistributedNotificationCenter::sharedCenter(),
                   &AgentManager::sharedManager);
      },
      [] {
        return std::make_unique<AgentManager>([] { return QuilloConfig::sharedConfig().groupProperties(); },
                                              DistributedNotificationCenter::sharedCenter(), sharedLoginItemServices(),
                                              &RemindersManager::sharedManager);
      });
}

void AgentManager::initialize(const QString& bundleIdentifier, PersistentPropertyList* sharedPrefs,
                              UserDefaults& defaults, NotificationCenter& distributedCenter,
                              const AgentManagerProvider& sharedManager) {
  // The agent itself never migrates or writes defaults here.
  if (bundleIdentifier != Identifier::mainApplication || !sharedPrefs) return;
  bool changed = false;
  for (const QLatin1StringView key : {Key::agentEnabled, Key::startAgentAtLogin}) {
    const auto older = defaults.objectForKey(key);
    if (!older || sharedPrefs->objectForKey(key)) continue;
    sharedPrefs->setObjectForKey(*older, key);
    defaults.removeObjectForKey(key);
    changed = true;
  }
  if (!sharedPrefs->objectForKey(Key::agentEnabled)) {
    sharedPrefs->setBoolForKey(false, Key::agentEnabled);
    changed = true;
  }

  AgentManager& manager = sharedManager();
  if (sharedPrefs->objectForKey(Key::startAgentAtLogin)) {
    manager.setShouldShowInMenuBar(sharedPrefs->boolForKey(Key::startAgentAtLogin));
    sharedPrefs->removeObjectForKey(Key::startAgentAtLogin);
    changed = true;
  }
  if (changed) notifyValuesDidChange(distributedCenter);
}

AgentManager::AgentManager(PersistentPropertyListSource sharedPrefs, NotificationCenter& distributedCenter,
                           LoginItemServices services, RemindersManagerProvider remindersManager)
    : m_sharedPrefs(std::move(sharedPrefs)),
      m_distributedCenter(distributedCenter),
      m_services(services),
      m_remindersManager(std::move(remindersManager)),
      m_observation(m_distributedCenter.observe(Notice::agentManagerValuesDidChange,
                                                [this](const Notification&) { agentSettingsDidChange(); })) {}

bool AgentManager::shouldShowInMenuBar() const {
  const PersistentPropertyList* list = m_sharedPrefs();
  return list && list->boolForKey(Key::agentEnabled);
}

void AgentManager::setShouldShowInMenuBar(bool shouldShow) {
  if (PersistentPropertyList* list = m_sharedPrefs()) list->setBoolForKey(shouldShow, Key::agentEnabled);
  notifyValuesDidChange();
  refreshAgentStatus();
  if (!shouldShow) disableReminders();
}

void AgentManager::disableReminders() {
  m_remindersManager().setRemindersAreEnabled(false);
}

void AgentManager::notifyValuesDidChange() {
  notifyValuesDidChange(m_distributedCenter);
}

void AgentManager::notifyValuesDidChange(NotificationCenter& distributedCenter) {
  distributedCenter.postNotification(Notice::agentManagerValuesDidChange);
}

LoginItem AgentManager::loginItem() const {
  return LoginItem(Identifier::agent, m_services);
}

void AgentManager::refreshAgentStatus() {
  LoginItem item = loginItem();
  const bool exists = item.existsAsLoginItem();
  if (shouldShowInMenuBar()) {
    if (!exists)
      item.enableAsLoginItem();
    else if (!item.isRunning())
      item.restartLoginItem();
  } else if (exists) {
    item.disableAsLoginItem();
  }
}

void AgentManager::restartAgentIfRunning() {
  LoginItem item = loginItem();
  if (item.isRunning()) item.restartLoginItem();
}

void AgentManager::agentSettingsDidChange() {
  willChangeValueForKey(shouldShowInMenuBarKeyPath);
  if (PersistentPropertyList* list = m_sharedPrefs()) list->synchronize();
  didChangeValueForKey(shouldShowInMenuBarKeyPath);
}

}  // namespace quillo
