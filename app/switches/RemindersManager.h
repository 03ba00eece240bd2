#pragma once

#include "config/PersistentPropertyList.h"
#include "foundation/KeyValueObserving.h"

#include <QLatin1StringView>

#include <functional>
#include <memory>

namespace quillo {

class AgentManager;
class NotificationCenter;
class UserDefaults;

// Whether the journal's reminders are on: one setting, kept in the list that both applications write. Nothing is
// cached. A change made in either process is told to observers of "remindersAreEnabled" in each of them, in the
// setter's own too, when its distributed notice arrives.
//
// Without a shared list, and for as long as there is none, reminders read as off and what is set is lost.
class RemindersManager final : public KeyValueObservable {
 public:
  static constexpr QLatin1StringView remindersAreEnabledKeyPath{"remindersAreEnabled"};

  // Initialised and made on first use, and never destroyed. May be asked for from any thread; used on the main one.
  // Only the program's entry function and the agent's manager ask for it.
  static RemindersManager& sharedManager();

  // Moves an older version's setting from the process's own defaults into the shared list, where that has none, and
  // writes YES where it still has none. Posts no notice. Without a list the older setting waits for a better start.
  static void initialize(PersistentPropertyList* sharedPrefs, UserDefaults& defaults);

  using AgentManagerProvider = std::function<AgentManager&()>;
  // The centre must outlive the object. The agent's manager is asked for only when reminders go on.
  RemindersManager(PersistentPropertyListSource sharedPrefs, NotificationCenter& distributedCenter,
                   AgentManagerProvider agentManager);

  [[nodiscard]] bool remindersAreEnabled() const;
  // Reminders need the agent: YES switches it on, too.
  void setRemindersAreEnabled(bool enabled);
  void enableAgent();

 private:
  void reminderSettingsDidChange();

  PersistentPropertyListSource m_sharedPrefs;
  NotificationCenter& m_distributedCenter;
  AgentManagerProvider m_agentManager;
  // Of Notice::remindersManagerValuesDidChange. The name to take off at the end is
  // Notice::agentReminderSettingsDidChange for the main application, under which nothing is ever registered, so there
  // is nothing to do for it here.
  std::unique_ptr<Registration> m_observation;
};

}  // namespace quillo
