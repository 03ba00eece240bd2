#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// Whether entries can be written at the journal's location: it is configured, readable and writable.
[[nodiscard]] bool haveAccessToJournal(const std::optional<QUrl>& location);

// Why entries cannot be written there, as a sentence for the user; empty when they can.
[[nodiscard]] QString journalAccessProblem(const std::optional<QUrl>& location);

// The location as a line that can be wrapped anywhere after a slash; empty where none is configured.
[[nodiscard]] QString journalLocationForDisplay(const std::optional<QUrl>& location);

}  // namespace quillo
