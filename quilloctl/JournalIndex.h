#pragma once

#include "qlcore/index/JournalSearchIndex.h"

#include <memory>

namespace quillo::ctl {

// The journal's index, brought up to date; null, with the reason said, where the entries cannot be read. What takes
// longer is told of where the error stream is a terminal.
[[nodiscard]] std::unique_ptr<JournalSearchIndex> indexOfJournal(const QLJournalPackageFile& package);

}  // namespace quillo::ctl
