#pragma once

#include "foundation/Date.h"
#include "foundation/PropertyListValue.h"
#include "qlcore/ConflictNames.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// One of the versions of an entry, as its file was when it was read.
struct EntryVersion {
  QString fileName;                              // in the folder of entries
  std::optional<ConflictName> copy;              // what a conflict copy's name says; nothing for the entry's own file
  qint64 written{0};                             // nanoseconds since 1970
  std::optional<PropertyListDictionary> fields;  // nothing where it is damaged
  QString damage;                                // why, in one line with the path; else empty
  QByteArray digest;                             // of the file's bytes

  [[nodiscard]] bool isWhole() const { return fields.has_value(); }
  [[nodiscard]] QString text() const;
  [[nodiscard]] QStringList tags() const;
  // Of the last save; the earliest date there is where the file has none.
  [[nodiscard]] Date modificationDate() const;
};

// The files of an entry of which there are conflict copies.
struct ConflictedEntry {
  QString uuid;
  QStringList copies;  // file names, sorted

  bool operator==(const ConflictedEntry&) const = default;
};

// An entry with all its versions. The entry's own file is the first, unless that is missing.
struct EntryVersions {
  QString uuid;
  QList<EntryVersion> versions;

  // Whether it has no file of its own.
  [[nodiscard]] bool isOrphaned() const { return !versions.isEmpty() && versions.first().copy.has_value(); }
  // Whether there is anything to be resolved.
  [[nodiscard]] bool isConflict() const { return versions.size() > 1 || isOrphaned(); }
};

}  // namespace quillo
