#include "app/switches/AgentManager.h"
#include "config/Keys.h"
#include "platform/HelperProcesses.h"
#include "platform/RunningApplications.h"
#include "quilloctl/Command.h"

#include <QJsonArray>
#include <QJsonObject>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

LoginItem loginItem(const Session& session) {
  return LoginItem(Identifier::agent, session.loginItemServices);
}

// The setting, what the session would start at login, and what runs, each by itself: they can differ.
int status(Context& context) {
  if (!sharedList(context)) return Failed;
  const Session session = context.session();
  const bool enabled = session.agentManager().shouldShowInMenuBar();
  const bool isLoginItem = loginItem(session).existsAsLoginItem();
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

int agentFailed(const QString& what, const QString& reason) {
  return failed(u"the agent "_s + what + u": "_s + reason);
}

int enable(Context& context) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const Session session = context.session();
  session.agentManager().setShouldShowInMenuBar(true);
  if (!isSaved(*list, u"the setting"_s)) return Failed;
  const LoginItem item = loginItem(session);
  if (!item.existsAsLoginItem()) return agentFailed(u"could not be made a login item"_s, item.errorString());
  QString reason;
  if (!session.agent.waitForAnswer(&reason)) return agentFailed(u"starts at login but not now"_s, reason);
  if (context.json) printJson(QJsonObject{{Key::agentEnabled, true}});
  return Done;
}

int disable(Context& context) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const Session session = context.session();
  session.agentManager().setShouldShowInMenuBar(false);
  if (!isSaved(*list, u"the setting"_s)) return Failed;
  // The manager leaves alone what is no login item: an entry that is hidden or starts nothing today goes, too, and so
  // does an agent that was started in another way.
  LoginItem item = loginItem(session);
  if (!item.disableAsLoginItem()) return agentFailed(u"still starts at login"_s, item.errorString());
  QString reason;
  if (!session.agent.end(&reason)) return agentFailed(u"did not end"_s, reason);
  if (context.json) printJson(QJsonObject{{Key::agentEnabled, false}});
  return Done;
}

bool isRunning(const Session& session) {
  return !session.runningApplications.running(Identifier::agent).isEmpty();
}

// The login item stays as it is.
int startAndWait(const Session& session) {
  QString reason;
  const bool came = session.agent.start(&reason) && session.agent.waitForAnswer(&reason);
  return came ? Done : agentFailed(u"did not come"_s, reason);
}

int start(Context& context) {
  const Session session = context.session();
  const bool ran = isRunning(session);
  if (!ran && startAndWait(session) != Done) return Failed;
  if (context.json) printJson(QJsonObject{{u"started"_s, !ran}});
  return Done;
}

int restart(Context& context) {
  const Session session = context.session();
  if (!isRunning(session)) return failed(u"the agent is not running"_s);
  QString reason;
  if (!session.agent.end(&reason)) return agentFailed(u"did not end"_s, reason);
  if (startAndWait(session) != Done) return Failed;
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
  agent.add_subcommand("enable", "Start the agent, now and at each login")->callback([&action] { action = enable; });
}

void addDisable(CLI::App& agent, Action& action) {
  agent.add_subcommand("disable", "End the agent, do not start it at login, and switch reminders off")
      ->callback([&action] { action = disable; });
}

void addStart(CLI::App& agent, Action& action) {
  agent.add_subcommand("start", "Start the agent now, where none runs; what happens at login stays")
      ->callback([&action] { action = start; });
}

void addRestart(CLI::App& agent, Action& action) {
  agent.add_subcommand("restart", "End the running agent and start it again; what happens at login stays")
      ->callback([&action] { action = restart; });
}

}  // namespace

void addAgentCommand(CLI::App& program, Action& action) {
  CLI::App* agent = program.add_subcommand("agent", "Look after the agent in the tray");
  agent->require_subcommand(1);
  addStatus(*agent, action);
  addEnable(*agent, action);
  addDisable(*agent, action);
  addStart(*agent, action);
  addRestart(*agent, action);
  addToggle(*agent, action);
}

}  // namespace quillo::ctl
