#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// "journal conflicts": lists the entries of which a synchroniser has left several versions, and does with them what is
// decided.
void addJournalConflictsCommand(CLI::App& journal, Action& action);

}  // namespace quillo::ctl
