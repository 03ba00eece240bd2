#pragma once

#include "foundation/Error.h"

#include <QString>
#include <QStringList>

namespace quillo {

class JournalConflicts;
class JournalFolder;

// Mends in a journal what can be mended without anybody's decision and without losing a word: what has to give way goes
// to the Trash. Blocks.
class JournalRepair {
 public:
  // `journal` is the path of the folder NAME.quillojournal.
  explicit JournalRepair(QString journal) : m_journal(std::move(journal)) {}

  // In this order:
  //   A Journal.plist that is missing or damaged, where there are entries: a conflict copy of it takes its place, or a
  //   new one is made.
  //   Copies that are an entry's only file become it, and copies that differ in nothing that has to be decided are
  //   merged; see JournalConflicts::settle().
  //   A whole copy takes the place of a damaged entry.
  //   Temporary files whose writer is gone, or that are older than a day: ours are removed, others' go to the Trash.
  // False, with an error of JournalError::domain, where the journal cannot be read or something failed; what was done
  // until then, and what could be done after it, is in done() all the same.
  bool run(Error* error);
  // One line for each thing that was done, with the files that it was done to.
  [[nodiscard]] const QStringList& done() const { return m_done; }

 private:
  bool mendProperties(Error* error);
  bool mendEntries(Error* error);
  bool removeLeftovers(Error* error);

  QString m_journal;
  QStringList m_done;
};

}  // namespace quillo
