#include "quilloctl/JournalIndex.h"

#include "quilloctl/ProgressLine.h"
#include "quilloctl/Streams.h"

namespace quillo::ctl {

std::unique_ptr<JournalSearchIndex> indexOfJournal(const QLJournalPackageFile& package) {
  auto index = std::make_unique<JournalSearchIndex>(package);
  JournalSearchIndex::Update update;
  {
    ProgressLine line("Reading the journal");
    update = index->bringUpToDate({}, [&line](const auto& progress) { line.show(progress.done, progress.total); });
  }
  if (!update.error) return index;
  // An empty answer would look like an empty journal.
  failed(update.error->localizedDescription);
  return nullptr;
}

}  // namespace quillo::ctl
