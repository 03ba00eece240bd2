#pragma once

#include "foundation/Date.h"
#include "foundation/TextRange.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// An entry as the index knows it.
struct IndexedEntry {
  QString uuid;
  QString fileName;  // in the folder of entries
  Date creationDate;
  Date modificationDate;
  QString timeZone;  // an IANA name; may be empty or unknown
  QDate day;         // of its creation, in its own zone
  QString text;
  QStringList tags;
  std::optional<QLLocation> location;
  std::optional<QLWeather> weather;
  // Conflict copies of it, see JournalConflicts. It is found by their words too.
  qsizetype otherVersions{0};

  // The part of the text to show in a list: around the first match, or the beginning. Matches are those inside it, as
  // parts of the whole text, in ascending order, none overlapping.
  TextRange excerpt;
  QList<TextRange> matches;
};

// A file among the entries that cannot be read as one.
struct IndexedDamage {
  QString fileName;
  QString uuid;    // empty where the name is none
  QString reason;  // one line with the file's path

  bool operator==(const IndexedDamage&) const = default;
};

// What a question found.
struct JournalAnswer {
  QList<IndexedEntry> entries;  // the part of the list that was asked for
  qint64 total{0};              // of all that match; 0 where the question does not ask for it
};

// How many entries of those that a question finds share a day, a month, a tag or a place.
struct JournalCount {
  QDate day;     // of months the first day; none for tags and places
  QString name;  // of a tag or place, in its most recent spelling; empty for days and months
  qint64 count{0};

  bool operator==(const JournalCount&) const = default;
};

enum class JournalCountBy { Day, Month, Tag, Place };

}  // namespace quillo
