#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// What asks the journal's index: each adds its command to that of entries.
void addList(CLI::App& entry, Action& action);
void addSearch(CLI::App& entry, Action& action);
void addOnThisDay(CLI::App& entry, Action& action);
void addTags(CLI::App& entry, Action& action);

}  // namespace quillo::ctl
