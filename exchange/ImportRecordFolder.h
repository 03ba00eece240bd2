#pragma once

#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QString>

#include <optional>
#include <utility>

namespace quillo {

class QLJournalPackageFile;

// Where the records of a journal's imports lie: below ~/.local/state/quillo/imports, by the journal's identifier. Of a
// journal on another file system they lie in its own folder under a name that begins with a dot, since the text of one
// that is encrypted or can be carried away is written nowhere else; they stay there when it is moved.
//
// Records are numbered. Whoever imports or takes back holds the folder: while the object lives nobody else gets one of
// the same journal, and when its program is killed the folder is free again.
class ImportRecordFolder {
 public:
  // Makes the folder where it is missing, for the user alone. Nothing, with an error, where that fails or another
  // program has the folder.
  [[nodiscard]] static std::optional<ImportRecordFolder> claim(const QLJournalPackageFile& package, Error* error);
  // The path of the newest record; empty where there is none. Nobody needs to hold the folder for that.
  [[nodiscard]] static QString newest(const QLJournalPackageFile& package);

  // Of the import that is about to begin.
  [[nodiscard]] QString pathForNext() const;
  // Drops the oldest where there are too many.
  void removeOld() const;
  void remove(const QString& recordPath) const;

 private:
  ImportRecordFolder(FileDescriptor folder, QString path) : m_folder(std::move(folder)), m_path(std::move(path)) {}

  FileDescriptor m_folder;
  QString m_path;
};

}  // namespace quillo
