#pragma once

#include "exchange/backup/JournalBackup.h"
#include "foundation/Date.h"
#include "foundation/UserDirectories.h"

#include <QString>

#include <optional>

namespace quillo {

// What became of the last backup, kept in a small file so that somebody hears of one that failed while nobody looked.
struct BackupRecord {
  std::optional<Date> lastMade;  // the last that was whole
  QString lastPath;              // its archive
  std::optional<Date> lastTry;
  // Why the last try failed, in one line; empty where it did not. A stopped one is no failure.
  QString failure;

  bool operator==(const BackupRecord&) const = default;

  // Nothing is recorded where there is no file that can be read. A run that was killed counts as failed, one that is
  // still going on does not.
  [[nodiscard]] static BackupRecord of(const UserDirectories& directories);

  // Runs the backup and records what becomes of it.
  [[nodiscard]] static JournalBackup::Result record(const JournalBackup& backup, const UserDirectories& directories);
  // Records that one could not even be begun.
  static void recordFailure(const QString& reason, const UserDirectories& directories);
};

}  // namespace quillo
