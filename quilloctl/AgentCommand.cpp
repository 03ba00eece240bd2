#include "quilloctl/Command.h"

#include <QJsonObject>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

int toggle(Context& context) {
  QString reason;
  if (!context.toggleAgent(&reason)) return failed(reason);
  if (context.json) printJson(QJsonObject{{u"toggled"_s, true}});
  return Done;
}

}  // namespace

void addAgentCommand(CLI::App& program, Action& action) {
  CLI::App* agent = program.add_subcommand("agent", "Talk to the running agent");
  agent->require_subcommand(1);
  agent->add_subcommand("toggle", "Open or close the entry window, as the shortcut does")->callback([&action] {
    action = toggle;
  });
}

}  // namespace quillo::ctl
