#pragma once

#include "FuzzTarget.h"
#include "exchange/ImportSource.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QStringList>

#include <functional>

namespace quillo {

// What holds of everything that an importer tells of a text: called twice with the same, it tells the same entries,
// each of which can be stored; refusals have a reason and a place within the text.
inline void checkImport(const QByteArray& bytes, const std::function<void(const ImportTaker& take)>& read) {
  QStringList identifiers[2];
  for (QStringList& seen : identifiers) {
    qint64 items = 0;
    read([&](const ImportItem& item) {
      require(++items <= bytes.size() + 2, "a text has an end");
      if (const auto* entry = std::get_if<ImportedEntry>(&item)) {
        require(QLJournalEntryFile::canonicalUUID(entry->uuid) == entry->uuid, "an entry has an identifier");
        require(EntryFields::serialized(entry->fields, nullptr).has_value(), "an entry can be stored");
        seen << entry->uuid;
      }
      if (const auto* problem = std::get_if<ImportProblem>(&item))
        require(!problem->reason.isEmpty() && problem->place.line <= bytes.count('\n') + 2,
                "a refusal has a reason and a place");
      return true;
    });
  }
  require(identifiers[0] == identifiers[1], "an entry is known again");
}

}  // namespace quillo
