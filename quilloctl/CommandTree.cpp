#include "quilloctl/CommandTree.h"

namespace quillo::ctl {

QStringList namesOfCommands(const CLI::App& app) {
  QStringList names;
  // Those of no group are for programs.
  for (const CLI::App* command : app.get_subcommands([](const CLI::App* one) { return !one->get_group().empty(); })) {
    names << QString::fromStdString(command->get_name());
    for (const std::string& alias : command->get_aliases()) names << QString::fromStdString(alias);
  }
  return names;
}

const CLI::App* commandNamed(const CLI::App& app, const QString& name) {
  const std::string wanted = name.toStdString();
  const auto found = app.get_subcommands([&wanted](const CLI::App* one) { return one->check_name(wanted); });
  return found.empty() ? nullptr : found.front();
}

const CLI::App& lastParsedCommand(const CLI::App& program) {
  const CLI::App* app = &program;
  while (!app->get_subcommands().empty()) app = app->get_subcommands().back();
  return *app;
}

}  // namespace quillo::ctl
