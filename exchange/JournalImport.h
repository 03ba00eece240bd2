#pragma once

#include "exchange/ImportSource.h"
#include "foundation/Date.h"
#include "qlcore/JournalFolder.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>

#include <functional>
#include <optional>

namespace quillo {

class QLJournalPackageFile;

// Takes a source's entries into a journal: looks at all of them first, then writes. Memory grows with the number of
// entries by their identifiers alone, and by what is replaced, so that all can be taken back.
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
    std::function<void(const ImportProblem&)> problem;
    std::function<void(const ImportPassedBy&)> passedBy;
    std::function<void(qint64 done)> progress;
    // Asked before each entry; true ends it. What was written is then taken back.
    std::function<bool()> isStopped;
  };

  // The package outlives the object. With `isReplacing` the source's entries take the place of those that differ.
  JournalImport(const QLJournalPackageFile& package, bool isReplacing)
      : m_package(package), m_isReplacing(isReplacing) {}

  // What importing the source would come to; nothing is changed.
  [[nodiscard]] Counts look(ImportSource& source, const Listener& listener) const;
  // Imports what can be read of it. Nothing, with an error, when an entry cannot be written; what was written until
  // then is taken back, and where that fails, too, the error says so.
  [[nodiscard]] std::optional<Counts> write(ImportSource& source, const Listener& listener, Error* error);

 private:
  struct Replaced {
    QString fileName;
    QByteArray bytes;  // compressed
  };
  [[nodiscard]] Fate fateOf(const ImportedEntry& entry, const std::optional<PropertyListDictionary>& there) const;
  bool writeEntry(const JournalFolder& folder, const ImportedEntry& entry, Counts& counts, Error* error);
  bool takeBack(const JournalFolder& folder);

  const QLJournalPackageFile& m_package;
  bool m_isReplacing;
  QList<QUuid> m_added;
  QList<Replaced> m_replaced;
};

}  // namespace quillo
