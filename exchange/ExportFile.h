#pragma once

#include "foundation/Error.h"

#include <QByteArray>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace quillo {

// A file that appears under its name when all of it is written and synced, and not before; until then it lies beside
// its place under another name, and is removed where it is not finished. Mode 0600.
class ExportFile {
 public:
  // Null, with an error, when it cannot be made, or when there is something and `isReplacing` is false.
  [[nodiscard]] static std::unique_ptr<ExportFile> make(const QString& path, bool isReplacing, Error* error);

  bool write(const QByteArray& bytes, Error* error);
  bool finish(Error* error);

 private:
  ExportFile(const QString& path, bool isReplacing);
  bool flush(Error* error);

  QString m_path;
  bool m_isReplacing;
  QSaveFile m_file;
  QByteArray m_waiting;
};

// Whether nothing is at `path`; if not, an error that says so.
bool isFree(const QString& path, Error* error);

}  // namespace quillo
