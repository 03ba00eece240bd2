#pragma once

#include "exchange/backup/BackupManifest.h"
#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QList>
#include <QString>

#include <optional>

namespace quillo {

// A backup that lies in a folder, known by its name and the beginning of its file.
struct StoredBackup {
  QString path;
  QString fileName;
  qint64 size{0};  // of the file, in bytes
  // Nothing where the file has a backup's name and does not begin like one; `problem` then says why, in one line.
  std::optional<BackupManifest> manifest;
  QString problem;

  // By the clock of the person: of the manifest, else of the name.
  [[nodiscard]] QDateTime begun() const;
  // Of the name: of several of the same second the greatest is the newest.
  [[nodiscard]] int number() const;
};

// The backups in a folder, of whatever journals, newest first. A folder that is not there has none; nothing, with an
// error, where it cannot be read. Reads the beginning of each file and never all of one.
[[nodiscard]] std::optional<QList<StoredBackup>> backupsInFolder(const QString& folder, Error* error);

// A folder while backups are made in it, which nobody else can do meanwhile.
class BackupFolder {
 public:
  // Makes the folder, for the user alone, where only the one above is there; takes the lock, and removes what runs that
  // were killed have left behind. Nothing, with an error, where that cannot be or another run is under way.
  [[nodiscard]] static std::optional<BackupFolder> open(const QString& path, Error* error);

  [[nodiscard]] const QString& path() const { return m_path; }
  [[nodiscard]] int descriptor() const { return m_folder.number(); }

 private:
  BackupFolder(QString path, FileDescriptor folder) : m_path(std::move(path)), m_folder(std::move(folder)) {}
  void removeLeftovers(bool isLocked) const;

  QString m_path;
  FileDescriptor m_folder;  // has the lock, which ends with it and with the process
};

}  // namespace quillo
