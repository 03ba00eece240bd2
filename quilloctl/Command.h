#pragma once

#include "app/switches/LoginItem.h"
#include "config/QuilloConfig.h"
#include "quilloctl/Streams.h"

#include <QString>
#include <QStringList>

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>

namespace quillo {
class AgentManager;
class BackupSchedule;
class HelperProcesses;
class QLJournalPackageFile;
class RemindersManager;
class RunningApplications;
class Workspace;
}  // namespace quillo

namespace quillo::ctl {

// The services of the user's session.
struct Session {
  RunningApplications& runningApplications;
  HelperProcesses& agent;
  Workspace& workspace;
  LoginItemServices loginItemServices;
  // Of the process; makes it at the first call, which may change settings that an older version has left.
  std::function<AgentManager&()> agentManager;
  // Shows it outside of any terminal; takes a second, whether it is there or not.
  std::function<void(const QString& title, const QString& text)> notify;
};

class PageDrawing;

// What every command works with.
struct Context {
  QuilloConfig& config;
  UserDirectories directories;
  // Broadcasts the name to the other processes; false when none can be told.
  std::function<bool(const QString& name)> post;
  // Does in the running agent what its shortcut does. False, with the reason, when none took the request.
  std::function<bool(QString* reason)> toggleAgent;
  bool json{false};
  // Joins the session the first time: from then on the agent's and the reminders' managers reach the other processes
  // and the login items.
  std::function<Session()> session;
  // Of the process; makes it at the first call, which sets reminders on where nobody has said otherwise.
  std::function<RemindersManager&()> remindersManager;
  // What makes the session call for backups; made at the first call.
  std::function<BackupSchedule&()> backupSchedule;
  // What a copy of this program has to be given to use the same home.
  QStringList homeArguments;
};

// The shared list; null, with the reason said, when it cannot be read.
PersistentPropertyList* sharedList(Context& context);

// Whether all that was set in the list is on disk. If not, it says that `what` was not saved, and why.
[[nodiscard]] bool isSaved(const PersistentPropertyList& list, const QString& what);

// The configured journal; null, with the reason said.
std::shared_ptr<QLJournalPackageFile> openJournal(Context& context);

// Checks of words that are given with an option. The parser's own check tells the range in digits by the hundred.
[[nodiscard]] CLI::Validator atLeastOne();
// An empty variable of a script is a slip.
[[nodiscard]] CLI::Validator notEmpty(const std::string& expected);

// Each adds its command with all sub-commands. The chosen one leaves its work in `action`, run after parsing is done,
// so that a wrong word anywhere changes nothing.
using Action = std::function<int(Context&)>;

// What setup does without options.
int setUpByQuestions(Context& context);
void addSetupCommand(CLI::App& program, Action& action);
void addSettingsCommand(CLI::App& program, Action& action);
void addJournalCommand(CLI::App& program, Action& action);
void addEntryCommand(CLI::App& program, Action& action);
void addExportCommand(CLI::App& program, Action& action, PageDrawing& drawing);
void addImportCommand(CLI::App& program, Action& action);
// Makes the session call for backups as the settings say now. False, with the reason said, where that cannot be; what
// is only to be known of it is printed, unless as JSON.
bool applyBackupSchedule(Context& context);
void addBackupCommand(CLI::App& program, Action& action);
void addReminderCommand(CLI::App& program, Action& action);
void addShortcutCommand(CLI::App& program, Action& action);
void addAgentCommand(CLI::App& program, Action& action);
void addOpenURLCommand(CLI::App& program, Action& action);
void addPostCommand(CLI::App& program, Action& action);
// The directory of an option --home in the command line that is completed goes into `home`.
void addCompleteCommand(CLI::App& program, Action& action, std::string& home);

}  // namespace quillo::ctl
