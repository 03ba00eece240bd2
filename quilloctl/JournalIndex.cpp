#include "quilloctl/JournalIndex.h"

#include "quilloctl/Streams.h"

#include <unistd.h>

#include <cstdio>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// A line that is written over, and gone in the end.
class ProgressLine {
 public:
  ~ProgressLine() {
    if (m_isShown) std::fputs("\r\x1b[K", stderr);
  }
  void show(const JournalSearchIndex::Progress& progress) {
    if (!m_isTerminal || progress.total == 0) return;
    std::fprintf(stderr, "\rReading the journal: %lld of %lld entries\x1b[K", static_cast<long long>(progress.done),
                 static_cast<long long>(progress.total));
    m_isShown = true;
  }

 private:
  const bool m_isTerminal = ::isatty(STDERR_FILENO) == 1;
  bool m_isShown{false};
};

}  // namespace

std::unique_ptr<JournalSearchIndex> indexOfJournal(const QLJournalPackageFile& package) {
  auto index = std::make_unique<JournalSearchIndex>(package);
  JournalSearchIndex::Update update;
  {
    ProgressLine line;
    update = index->bringUpToDate({}, [&line](const auto& progress) { line.show(progress); });
  }
  if (!update.error) return index;
  // An empty answer would look like an empty journal.
  failed(update.error->localizedDescription);
  return nullptr;
}

}  // namespace quillo::ctl
