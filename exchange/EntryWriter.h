#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"
#include "qlcore/index/IndexedEntry.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace quillo {

struct ExportedEntry {
  IndexedEntry entry;
  PropertyListDictionary fields;  // all that its file holds, for formats that ask for it
};

// What is known of an export before its first entry.
struct ExportOverview {
  QString journalName;
  QString journalIdentifier;
  Date time;                   // of the export
  qint64 entries{0};           // how many are to come
  QList<JournalCount> months;  // and of which months, in ascending order, for formats that ask for them
};

// One format: takes the entries of an export one after the other. Each call answers false, with an error, where what
// comes of it cannot be written, and is then the last.
class EntryWriter {
 public:
  virtual ~EntryWriter() = default;
  virtual bool begin(const ExportOverview& overview, Error* error) = 0;
  virtual bool add(const ExportedEntry& exported, Error* error) = 0;
  virtual bool end(Error* error) = 0;
};

// Where the bytes of a document go.
using ByteSink = std::function<bool(const QByteArray& bytes, Error* error)>;

}  // namespace quillo
