#pragma once

#include "app/switches/LoginItem.h"
#include "preferences/controls/ShortcutRecorder.h"
#include "preferences/model/PreferenceStore.h"

#include <QString>

#include <functional>

namespace quillo {

class AgentManager;
class BackupSchedule;
class HelperProcesses;
class OpenPanel;
class RemindersManager;
class SpellChecker;
class Workspace;

// What the preferences work with; all of it must outlive them.
struct PreferencesServices {
  PreferenceStoreServices settings;
  // Made when they are first asked for, which may change settings that an older version has left.
  std::function<AgentManager&()> agentManager;
  std::function<RemindersManager&()> remindersManager;
  std::function<LoginItemServices()> loginItems;
  // Starts the agent for this session alone.
  HelperProcesses& agent;
  ShortcutRecorderServices shortcut;
  // What is to be known of keys on this desktop; empty for nothing.
  QString shortcutNote{};
  Workspace& workspace;
  OpenPanel& openPanel;
  SpellChecker& spellChecker;
  // Has the running agent give a reminder now, as the settings want it. False, with the reason.
  std::function<bool(QString* reason)> tryReminder;
  // Of all programs' log files.
  QString logFolder;
  // Null where the session is not to be told when backups are made.
  BackupSchedule* backupSchedule{nullptr};
};

}  // namespace quillo
