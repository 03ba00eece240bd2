#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// Whether entries can be written at the journal's location: it is configured, readable and writable.
[[nodiscard]] bool haveAccessToJournal(const std::optional<QUrl>& location);

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
