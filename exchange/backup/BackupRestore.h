#pragma once

#include "foundation/Error.h"

#include <QString>
#include <QUrl>

#include <functional>

namespace quillo {

// Makes a new journal of a backup, where nothing may be yet: unpacked under a hidden name beside its place, synced,
// read again from the disk, opened as a journal, and renamed then. What a killed run has left behind is removed by the
// next one for the same place.
struct BackupRestore {
  enum class Outcome { Restored, Stopped, Failed };

  QString archive;  // the path of the backup
  QString journal;  // the path of the new journal, NAME.quillojournal; the folder above must be there
  // What is done, from 0 to 1; called often. False stops it.
  std::function<bool(double done)> progress{};

  struct Result {
    Outcome outcome{Outcome::Failed};
    Error error;
    QUrl journal;
    qint64 entries{0};
  };
  // Blocks as long as it takes: not for the main thread.
  [[nodiscard]] Result run() const;

  // A free place in `folder` for the journal of this name: by the name, else with a number behind it.
  [[nodiscard]] static QString freePlace(const QString& folder, const QString& journalName);

 private:
  class Work;
};

}  // namespace quillo
