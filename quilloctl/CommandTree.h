#pragma once

#include <QString>
#include <QStringList>

#include <CLI/CLI.hpp>

namespace quillo::ctl {

// The commands that help tells of, by all of their names.
[[nodiscard]] QStringList namesOfCommands(const CLI::App& app);
// The command below `app` by one of its names, or null.
[[nodiscard]] const CLI::App* commandNamed(const CLI::App& app, const QString& name);
// The one that a command line got to before it ended or went wrong.
[[nodiscard]] const CLI::App& lastParsedCommand(const CLI::App& program);

}  // namespace quillo::ctl
