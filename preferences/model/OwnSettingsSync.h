#pragma once

#include "foundation/PropertyListValue.h"

#include <QFileSystemWatcher>
#include <QObject>

namespace quillo {

class NotificationCenter;
class UserDefaults;

// Keeps those settings alike that the agent and this program have each for itself, and a person sees as one: how a text
// is checked, and where place and weather come from. What is changed last counts. The agent tells nobody of a switch in
// its text's menu; so the folder of both files is watched, at the kernel's word.
//
// Posts SpellingAndGrammarSettingsDidChange in the process for what the agent has changed, and the distributed
// SettingsDidChange for what this program has. Main thread only.
class OwnSettingsSync : public QObject {
  Q_OBJECT

 public:
  // Takes over at once what the agent has. All of them must outlive the object.
  OwnSettingsSync(UserDefaults& own, UserDefaults& agents, NotificationCenter& localCenter,
                  NotificationCenter& distributedCenter);

 private:
  void watchFolder();
  void reconcile();

  UserDefaults& m_own;
  UserDefaults& m_agents;
  NotificationCenter& m_localCenter;
  NotificationCenter& m_distributedCenter;
  QFileSystemWatcher m_watcher;
  // What both had when they were last compared.
  PropertyListDictionary m_known;
};

}  // namespace quillo
