#pragma once

#include "exchange/ImportRecord.h"
#include "exchange/ImportRecordFolder.h"
#include "exchange/ImportSource.h"
#include "exchange/ImportUndo.h"
#include "foundation/Date.h"
#include "qlcore/JournalFolder.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace quillo {

class QLJournalPackageFile;

// Takes a source's entries into a journal: looks at all of them first, then writes. Memory grows with the number of
// entries by their identifiers alone. What is written is noted in a record of the journal's imports, by which
// ImportUndo takes it back, and which tells after a kill what has to go.
class JournalImport {
 public:
  // What is done with an entry.
  enum class Fate {
    New,
    Same,     // it is there already and stays
    Differs,  // one of that identifier is there, is not the same, and stays
    Replaced,
  };
  struct Counts {
    qint64 added{0};  // or to be added
    qint64 same{0};
    qint64 differing{0};
    qint64 replaced{0};
    qint64 problems{0};
    qint64 passedBy{0};
    // Of the earliest and the latest entry of the source.
    std::optional<Date> first;
    std::optional<Date> last;

    [[nodiscard]] qint64 entries() const { return added + same + differing + replaced; }
  };
  struct Listener {
    std::function<void(const ImportProblem&)> problem{};
    std::function<void(const ImportPassedBy&)> passedBy{};
    std::function<void(qint64 done)> progress{};
    // Asked before each entry; true ends it. What was written is then taken back.
    std::function<bool()> isStopped{};
    // An earlier import, whose program was killed, was taken back before this one began.
    std::function<void(const ImportUndo::LastImport&)> tookBack{};
  };

  // The package outlives the object. With `isReplacing` the source's entries take the place of those that differ.
  JournalImport(const QLJournalPackageFile& package, bool isReplacing, ImportOrigin origin = {})
      : m_package(package), m_isReplacing(isReplacing), m_origin(std::move(origin)) {}

  // What importing the source would come to; nothing is changed.
  [[nodiscard]] Counts look(ImportSource& source, const Listener& listener) const;
  // Imports what can be read of it. Nothing, with an error, when an entry cannot be written or another program imports
  // into the journal; what was written until then is taken back, and where that fails, too, the error says so.
  [[nodiscard]] std::optional<Counts> write(ImportSource& source, const Listener& listener, Error* error);

 private:
  // An entry that is about to be written.
  struct Pending {
    ImportStep step;
    QByteArray bytes;
    Fate fate;
  };
  [[nodiscard]] Fate fateOf(const ImportedEntry& entry, const std::optional<PropertyListDictionary>& there) const;
  bool plan(const JournalFolder& folder, const ImportedEntry& entry, Counts& counts, Error* error);
  bool writePending(const JournalFolder& folder, const ImportRecordFolder& records, Counts& counts, Error* error);

  const QLJournalPackageFile& m_package;
  bool m_isReplacing;
  ImportOrigin m_origin;
  QList<Pending> m_pending;
  qsizetype m_pendingBytes{0};
  std::optional<ImportRecord> m_record;  // from the first entry that is written
};

}  // namespace quillo
