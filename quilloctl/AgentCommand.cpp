#include "app/AgentManager.h"
#include "config/Keys.h"
#include "platform/RunningApplications.h"
#include "quilloctl/Command.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QThread>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// An agent saves what is written in its window, and goes.
constexpr int endMilliseconds = 5000;

// The setting, what the session would start at login, and what runs, each by itself: they can differ.
int status(Context& context) {
  if (!sharedList(context)) return Failed;
  const Session session = context.session();
  const bool enabled = AgentManager::sharedManager().shouldShowInMenuBar();
  const bool isLoginItem = LoginItem(Identifier::agent).existsAsLoginItem();
  QStringList processes;
  QJsonArray array;
  for (const RunningApplication& application : session.runningApplications.running(Identifier::agent)) {
    processes << QString::number(application.processIdentifier);
    array << application.processIdentifier;
  }
  if (context.json) {
    printJson(QJsonObject{{u"enabled"_s, enabled}, {u"loginItem"_s, isLoginItem}, {u"running"_s, array}});
    return Done;
  }
  const auto yesOrNo = [](bool value) { return value ? u"yes"_s : u"no"_s; };
  print(u"enabled:         "_s + yesOrNo(enabled));
  print(u"starts at login: "_s + yesOrNo(isLoginItem));
  print(u"running:         "_s + (processes.isEmpty() ? u"no"_s : u"yes, process "_s + processes.join(u", "_s)));
  return Done;
}

// Whether none is left. One that is still ending would be taken for a running one when the next command enables it.
bool waitForEnd(const RunningApplications& applications) {
  for (QDeadlineTimer deadline(endMilliseconds); !applications.running(Identifier::agent).isEmpty();) {
    if (deadline.hasExpired()) return false;
    QThread::msleep(20);
  }
  return true;
}

int turn(Context& context, bool on) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const Session session = context.session();
  AgentManager::sharedManager().setShouldShowInMenuBar(on);
  if (!list->dirtyProperties().isEmpty()) return failed(u"the setting was not saved"_s);
  if (const LoginItem item(Identifier::agent); item.existsAsLoginItem() != on)
    return failed((on ? u"the agent could not be made a login item: "_s : u"the agent still starts at login: "_s) +
                  item.errorString());
  if (!on && !waitForEnd(session.runningApplications)) return failed(u"the agent was asked to end, and still runs"_s);
  if (context.json) printJson(QJsonObject{{Key::agentEnabled, on}});
  return Done;
}

int restart(Context& context) {
  const Session session = context.session();
  if (session.runningApplications.running(Identifier::agent).isEmpty()) return failed(u"the agent is not running"_s);
  AgentManager::sharedManager().restartAgentIfRunning();
  // A restart takes the login item out and puts it back.
  if (!LoginItem(Identifier::agent).existsAsLoginItem()) return failed(u"the agent could not be started again"_s);
  if (context.json) printJson(QJsonObject{{u"restarted"_s, true}});
  return Done;
}

int toggle(Context& context) {
  QString reason;
  if (!context.toggleAgent(&reason)) return failed(reason);
  if (context.json) printJson(QJsonObject{{u"toggled"_s, true}});
  return Done;
}

void addToggle(CLI::App& agent, Action& action) {
  agent.add_subcommand("toggle", "Open or close the entry window, as the shortcut does")->callback([&action] {
    action = toggle;
  });
}

void addStatus(CLI::App& agent, Action& action) {
  agent.add_subcommand("status", "Print whether the agent is enabled, starts at login and runs")->callback([&action] {
    action = status;
  });
}

void addEnable(CLI::App& agent, Action& action) {
  agent.add_subcommand("enable", "Start the agent, now and at each login")->callback([&action] {
    action = [](Context& context) { return turn(context, true); };
  });
}

void addDisable(CLI::App& agent, Action& action) {
  agent.add_subcommand("disable", "End the agent, do not start it at login, and switch reminders off")
      ->callback([&action] { action = [](Context& context) { return turn(context, false); }; });
}

void addRestart(CLI::App& agent, Action& action) {
  agent.add_subcommand("restart", "End the running agent and start it again")->callback([&action] {
    action = restart;
  });
}

}  // namespace

void addAgentCommand(CLI::App& program, Action& action) {
  CLI::App* agent = program.add_subcommand("agent", "Look after the agent in the tray");
  agent->require_subcommand(1);
  addStatus(*agent, action);
  addEnable(*agent, action);
  addDisable(*agent, action);
  addRestart(*agent, action);
  addToggle(*agent, action);
}

}  // namespace quillo::ctl
