#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"

#include <QString>

#include <functional>
#include <variant>

namespace quillo {

// Where in a source something stands. Lines count from 1; 0 is the file as a whole.
struct ImportPlace {
  QString path;
  int line{0};

  // "notes/a.md:3".
  [[nodiscard]] QString text() const { return line > 0 ? path + u':' + QString::number(line) : path; }
};

// An entry of a source.
struct ImportedEntry {
  ImportPlace place;
  QString uuid;
  PropertyListDictionary fields;
  // The fields are all that its file is to hold; otherwise they are the text and what belongs to it, and whatever else
  // an entry that is there already has is nobody's to remove.
  bool isWhole{false};
};

// What of a source cannot be an entry, and why, as the end of a sentence.
struct ImportProblem {
  ImportPlace place;
  QString reason;
};

// What is left where it is, and why.
struct ImportPassedBy {
  ImportPlace place;
  QString reason;
};

using ImportItem = std::variant<ImportedEntry, ImportProblem, ImportPassedBy>;

using ImportTaker = std::function<bool(const ImportItem& item)>;

// One format: reads entries one after the other, as often as it is asked, without keeping them.
class ImportSource {
 public:
  virtual ~ImportSource() = default;
  // Calls `take` with each entry and whatever else is to be told, in the order of the source, until it answers false.
  virtual void forEach(const ImportTaker& take) = 0;
};

}  // namespace quillo
