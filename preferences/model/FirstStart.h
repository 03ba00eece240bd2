#pragma once

#include "PTHotKey/PTKeyCombo.h"
#include "app/switches/LoginItem.h"
#include "foundation/Error.h"
#include "foundation/UserDirectories.h"
#include "preferences/model/ReminderChoice.h"

#include <QString>
#include <QUrl>

#include <functional>

namespace quillo {

class AgentManager;
class HelperProcesses;
class QuilloConfig;

// What the choices of a first start are written with.
struct FirstStartServices {
  QuilloConfig& config;
  // Tells the other processes; see Notice.
  std::function<void(const QString& name)> post;
  // Of the process; asked for when the agent is to start at login, or is not to any more.
  std::function<AgentManager&()> agentManager;
  LoginItemServices loginItemServices;
  HelperProcesses& agent;
};

// What a person decides before Quillo is used: which journal, whether to be reminded, the key that opens the entry
// window, and whether the agent starts at login. It keeps choices; only apply() and startAgent() change anything.
struct FirstStart {
  enum class Journal { None, New, Existing };
  // As they are where the agent is not spoken of.
  enum class Agent { Untouched, StartsNow, StartsAtLogin };

  Journal journal{Journal::New};
  QUrl newJournal;  // nothing may be there yet
  // Into the new one what another program kept is to come afterwards, which is for whoever shows the journal.
  bool bringsEntriesIn{false};
  QUrl existingJournal;  // empty until one is chosen
  ReminderChoice reminders;
  PTKeyCombo::Pointer shortcut{PTKeyCombo::clearKeyCombo()};  // never null; the clear one is none
  Agent agent{Agent::StartsAtLogin};

  // What is proposed: a journal among the documents, a reminder every evening, Cmd, Shift and J where no other program
  // has that, and the agent at login. What is configured already is proposed again.
  [[nodiscard]] static FirstStart suggested(QuilloConfig& config,
                                            const std::function<bool(const PTKeyCombo&)>& isFree = {});

  // The journal that is chosen; empty where none is.
  [[nodiscard]] QUrl chosenJournal() const;
  // Why it cannot be used, in one sentence; empty for one that can, and for none.
  [[nodiscard]] QString journalProblem() const;

  // Creates the journal where a new one is wanted and writes everything, as far as it was chosen; other processes are
  // told. False, with an error, where that fails: without its journal nothing else is written.
  bool apply(const FirstStartServices& services, Error* error) const;
  // Then: starts the agent, and waits in an event loop until it answers. False, with the reason in a part of a
  // sentence.
  bool startAgent(const FirstStartServices& services, QString* reason) const;

 private:
  void writeSettings(const FirstStartServices& services) const;
};

}  // namespace quillo
