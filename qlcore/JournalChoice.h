#pragma once

#include "foundation/Error.h"

#include <QUrl>

namespace quillo {

class QuilloConfig;

// A place for a journal of somebody who has configured none: in the folder of documents.
struct SuggestedJournal {
  QUrl location;
  bool exists{false};  // there is a journal already
};
[[nodiscard]] SuggestedJournal suggestedJournal();
// The first place at which there is nothing yet, in the folder of documents or in another.
[[nodiscard]] QUrl freeJournalLocation();
[[nodiscard]] QUrl freeJournalLocation(const QString& folder);

// Makes `location` the configured journal, after creating one there where that is wanted. False, with an error, where
// there is none that can be used, which changes nothing; or, with code NotWritable, where the choice could not be
// saved: it then lasts until the program ends.
bool useJournal(QuilloConfig& config, const QUrl& location, bool create, Error* error);

}  // namespace quillo
