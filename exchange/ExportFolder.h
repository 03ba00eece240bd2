#pragma once

#include "foundation/Error.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

namespace quillo {

// A folder of files that appears under its name when all of them are written and synced. Until then it lies beside its
// place under a hidden name, and is removed where it is not finished. For the user alone.
class ExportFolder {
 public:
  // Null, with an error, when it cannot be made, or when something other than an empty folder is there. With
  // `isReplacing` a folder may be there: files of the same names are replaced, the others stay.
  [[nodiscard]] static std::unique_ptr<ExportFolder> make(const QString& path, bool isReplacing, Error* error);
  ~ExportFolder();
  ExportFolder(const ExportFolder&) = delete;
  ExportFolder& operator=(const ExportFolder&) = delete;

  // `name` is a file's name that no other file of this folder has.
  bool addFile(const QString& name, const QByteArray& bytes, Error* error);
  bool finish(Error* error);

 private:
  ExportFolder(const QString& path, const QString& temporary, bool isReplacing)
      : m_path(path), m_temporary(temporary), m_isReplacing(isReplacing) {}
  bool moveFiles(Error* error) const;

  QString m_path;
  QString m_temporary;
  bool m_isReplacing;
};

}  // namespace quillo
