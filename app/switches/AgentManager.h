#pragma once

#include "app/switches/LoginItem.h"
#include "config/PersistentPropertyList.h"
#include "foundation/KeyValueObserving.h"

#include <QLatin1StringView>
#include <QString>

#include <functional>

namespace quillo {

class NotificationCenter;
class RemindersManager;
class UserDefaults;

// Whether the agent is enabled: it sits in the tray and is started at login. One setting in the list that both
// applications write; nothing is cached. A change made in either process is told to observers of "shouldShowInMenuBar"
// in each of them, in the setter's own too, when its distributed notice arrives.
//
// Without a shared list, and for as long as there is none, the agent reads as disabled and what is set is lost.
class AgentManager final : public KeyValueObservable {
 public:
  static constexpr QLatin1StringView shouldShowInMenuBarKeyPath{"shouldShowInMenuBar"};

  // Initialised and made on first use, and never destroyed. May be asked for from any thread; used on the main one.
  // Only the program's entry function and the reminders' manager ask for it.
  static AgentManager& sharedManager();
  // What that one works with: set by the entry function before it is first asked for. They must outlive its use.
  static void setSharedLoginItemServices(LoginItemServices services);

  using AgentManagerProvider = std::function<AgentManager&()>;
  using RemindersManagerProvider = std::function<RemindersManager&()>;

  // Only in the main application: moves an older version's settings from the process's own defaults into the shared
  // list, writes NO where that has none, and turns the obsolete StartAgentAtLogin into the setting of today. A notice
  // goes out when anything changed. Without a list the older settings wait for a better start.
  static void initialize(const QString& bundleIdentifier, PersistentPropertyList* sharedPrefs, UserDefaults& defaults,
                         NotificationCenter& distributedCenter, const AgentManagerProvider& sharedManager);

  // What is given must outlive the object. The reminders' manager is asked for only when the agent goes off.
  AgentManager(PersistentPropertyListSource sharedPrefs, NotificationCenter& distributedCenter,
               LoginItemServices services, RemindersManagerProvider remindersManager);

  [[nodiscard]] bool shouldShowInMenuBar() const;
  // Stores, tells, and brings the login item in line. NO switches reminders off, too: nobody is there to give them.
  void setShouldShowInMenuBar(bool shouldShow);
  void disableReminders();

  void notifyValuesDidChange();
  static void notifyValuesDidChange(NotificationCenter& distributedCenter);

  // Registers, restarts or takes out the login item as the setting wants it.
  void refreshAgentStatus();
  void restartAgentIfRunning();

 private:
  void agentSettingsDidChange();
  [[nodiscard]] LoginItem loginItem() const;

  PersistentPropertyListSource m_sharedPrefs;
  NotificationCenter& m_distributedCenter;
  LoginItemServices m_services;
  RemindersManagerProvider m_remindersManager;
  std::unique_ptr<Registration> m_observation;
};

}  // namespace quillo
