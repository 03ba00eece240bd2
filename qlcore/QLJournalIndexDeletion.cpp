#include "qlcore/QLJournalIndexDeletion.h"

#include "foundation/FileManager.h"

namespace quillo::QLJournalIndexOSXAdditions {

bool deleteEntryOrEntryFile(QLJournalIndex& index, const Deletable& item, bool moveToTrash, Error* error) {
  const auto deleteFile = [moveToTrash](const QUrl& url, Error* out) {
    return FileManager::removeItemAtURL(url, moveToTrash, out);
  };
  if (const auto* entry = std::get_if<QLEntry>(&item)) return index.deleteEntry(*entry, error, deleteFile);
  return index.deleteEntryFile(std::get<std::shared_ptr<QLJournalEntryFile>>(item), error, deleteFile);
}

bool deleteEntryFile(QLJournalIndex& index, const std::shared_ptr<QLJournalEntryFile>& entryFile, bool moveToTrash,
                     Error* error) {
  return deleteEntryOrEntryFile(index, entryFile, moveToTrash, error);
}

bool deleteEntry(QLJournalIndex& index, const QLEntry& entry, bool moveToTrash, Error* error) {
  return deleteEntryOrEntryFile(index, entry, moveToTrash, error);
}

}  // namespace quillo::QLJournalIndexOSXAdditions
