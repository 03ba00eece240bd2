#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

class QuilloConfig;
struct Error;

// Whether entries can be written at the journal's location: it is configured, readable and writable.
[[nodiscard]] bool haveAccessToJournal(const std::optional<QUrl>& location);

// A place for a journal of somebody who has configured none: in the folder of documents.
struct SuggestedJournal {
  QUrl location;
  bool exists{false};  // there is a journal already
};
[[nodiscard]] SuggestedJournal suggestedJournal();

// Makes `location` the configured journal, after creating one there where that is wanted. False, with an error, where
// there is none that can be used, which changes nothing; or, with code NotWritable, where the choice could not be
// saved: it then lasts until the program ends.
bool useJournal(QuilloConfig& config, const QUrl& location, bool create, Error* error);

// What the window shows in the editor's place while the journal cannot be reached.
struct JournalPanel {
  enum class Offer { Reconnect, CreateOrChoose, UseOrChoose };

  QString title;
  QString reason;  // whole sentences
  Offer offer{Offer::Reconnect};
};
// For the configured location, if any; `isConfigurable` says whether the settings can be read at all.
[[nodiscard]] JournalPanel journalPanel(const std::optional<QUrl>& location, bool isConfigurable);

// What becomes of a text meanwhile.
[[nodiscard]] QString whatWasWrittenIsKept();

}  // namespace quillo
