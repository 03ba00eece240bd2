#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// Prints the numbers of entries, words and days, the longest row of days, and a chart of the months. Answers an exit
// code.
int journalStatistics(Context& context);

}  // namespace quillo::ctl
