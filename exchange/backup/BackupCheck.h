#pragma once

#include "exchange/backup/BackupReader.h"

#include <QStringList>

namespace quillo {

// Reads all of a backup's archive, compares every file with its checksum and sees whether the journal in it could be
// used.
struct BackupCheck {
  BackupManifest manifest;
  qint64 entries{0};
  qint64 files{0};
  qint64 bytes{0};
  // Entries that cannot be read though they are what was saved: they were damaged in the journal. Of very many, some.
  QStringList damagedEntries;
  qint64 damaged{0};
  bool isStopped{false};
  std::optional<Error> error;  // why it is no whole backup

  [[nodiscard]] bool isWhole() const { return !error; }

  // Blocks as long as it takes: not for the main thread.
  [[nodiscard]] static BackupCheck of(const QString& path, const BackupReader::Progress& progress = {});
  [[nodiscard]] static BackupCheck of(BackupReader& reader, const BackupReader::Progress& progress = {});
};

}  // namespace quillo
