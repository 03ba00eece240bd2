#pragma once

#include "qlcore/QLJournalIndex.h"

#include <memory>
#include <variant>

namespace quillo::QLJournalIndexOSXAdditions {

// What can be deleted: an entry by its place, or one that was read.
using Deletable = std::variant<QLEntry, std::shared_ptr<QLJournalEntryFile>>;

// Drop the item from the index and its file from the disk, into the Trash or for good. False, with an error, when the
// file cannot be removed; one that is no longer there is, for the Trash, OS status -43.
bool deleteEntryOrEntryFile(QLJournalIndex& index, const Deletable& item, bool moveToTrash, Error* error);
bool deleteEntryFile(QLJournalIndex& index, const std::shared_ptr<QLJournalEntryFile>& entryFile, bool moveToTrash,
                     Error* error);
bool deleteEntry(QLJournalIndex& index, const QLEntry& entry, bool moveToTrash, Error* error);

}  // namespace quillo::QLJournalIndexOSXAdditions
