#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <utility>

namespace quillo {

// Where an import comes from, to be told of later.
struct ImportOrigin {
  QString path;
  QString format;  // ImportFormat::name
};

// One file of a journal's folder of entries that an import wrote.
struct ImportStep {
  QString fileName;
  QByteArray hash;                // of what was written; see hashOf()
  std::optional<QByteArray> old;  // what was there before; nothing where the entry is new

  [[nodiscard]] static QByteArray hashOf(const QByteArray& bytes);
};

// What stands above and below the steps.
struct ImportRecordHead {
  ImportOrigin origin;
  Date started;
  qint64 added{0};
  qint64 replaced{0};
  bool hasEnd{false};  // otherwise the import was cut off, and the counts are those of the steps
};

// The record of an import while that goes on: JSON, one object a line. What is to be written is noted before, so that
// also after a kill or a power cut nothing of it is unknown. Errors are of the Cocoa domain.
class ImportRecord {
 public:
  // Makes the file, for the user alone; nothing may be there.
  [[nodiscard]] static std::optional<ImportRecord> begin(const QString& path, const ImportOrigin& origin, Error* error);
  [[nodiscard]] const QString& path() const { return m_path; }

  // Returns when the steps are on the disk. Where it fails, nothing of them stays behind.
  bool append(const QList<ImportStep>& steps, Error* error);
  // The last line.
  bool end(Error* error);

  // Calls `take` with each step in order until it answers false. False, with an error, where the record cannot be read
  // or has a line that is none; without an end it is taken to end there: its last lines may be torn, and what they
  // stood for was not begun.
  static bool forEachStep(const QString& path, const std::function<bool(const ImportStep&)>& take, Error* error);
  // Nothing where it is no record.
  [[nodiscard]] static std::optional<ImportRecordHead> head(const QString& path);

 private:
  ImportRecord(FileDescriptor file, QString path) : m_file(std::move(file)), m_path(std::move(path)) {}
  bool appendLines(const QByteArray& lines, Error* error);

  FileDescriptor m_file;
  QString m_path;
  qint64 m_size{0};
  qint64 m_added{0};
  qint64 m_replaced{0};
};

}  // namespace quillo
