#pragma once

#include "foundation/FileDescriptor.h"

#include <QString>
#include <QStringList>

namespace quillo {

// The log files of one directory: "quillo-agent-000001.log" and so on. The number only grows, so the newest file has
// the highest one whatever the clock does, and two agents that change places never rename a file under each other.
class LogFileManager {
 public:
  static constexpr qint64 maximumFileSize = qint64{1024} * 1024;  // bytes; a file that has reached it is not continued
  static constexpr int maximumNumberOfLogFiles = 5;

  // An absolute path without a trailing slash; with an empty one there are no files.
  explicit LogFileManager(const QString& directory) : m_directory(directory) {}

  // Makes the directory, readable for its user only, and those above it. An existing one is left as it is.
  void createDirectory() const;

  // Absolute paths, the newest file first. Empty where there is no such directory.
  [[nodiscard]] QStringList sortedLogFilePaths() const;

  // Opens the newest file for appending, or a new one where there is none or the newest is full, and removes the
  // oldest beyond the number to keep. None where no file can be opened.
  [[nodiscard]] FileDescriptor openCurrentFile() const;

 private:
  [[nodiscard]] QString pathOfNumber(quint64 number) const;

  QString m_directory;
};

}  // namespace quillo
