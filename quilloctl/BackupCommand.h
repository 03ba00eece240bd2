#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// The parts of the backup command, each in a file of its own.
void addBackupMake(CLI::App& backup, Action& action);
void addBackupSchedule(CLI::App& backup, Action& action);
void addBackupRestore(CLI::App& backup, Action& action);

}  // namespace quillo::ctl
