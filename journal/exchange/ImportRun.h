#pragma once

#include "exchange/ImportFormat.h"
#include "exchange/ImportUndo.h"
#include "exchange/JournalImport.h"
#include "journal/exchange/BackgroundWork.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// What is to be imported, and how.
struct ImportOrder {
  QUrl journal;
  const ImportFormat* format{nullptr};
  QString path;  // of the file or folder
  bool makesTagsOfHashtags{false};
  bool isReplacing{false};
};

struct ImportPreview {
  JournalImport::Counts counts;
  QStringList problems;  // the first of them, where and why
  bool isStopped{false};
  std::optional<Error> error;
};

struct ImportOutcome {
  JournalImport::Counts counts;
  bool isStopped{false};
  // Why nothing was imported.
  std::optional<Error> error;
};

// Reads all of the source and says what would come of it; changes nothing.
[[nodiscard]] ImportPreview previewImport(const ImportOrder& order, BackgroundWork::Monitor& monitor);
// Imports what can be read. Where it is stopped or fails, what was written is taken back. `total` is how many there
// are.
[[nodiscard]] ImportOutcome runImport(const ImportOrder& order, qint64 total, BackgroundWork::Monitor& monitor);

struct ImportUndoOutcome {
  ImportUndo::Counts counts;
  bool isStopped{false};
  // Why it, or the rest of it, was not taken back.
  std::optional<Error> error;
};

[[nodiscard]] ImportUndoOutcome undoLastImport(const QUrl& journal, BackgroundWork::Monitor& monitor);

}  // namespace quillo
