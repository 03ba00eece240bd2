#pragma once

#include "app/logging/LogFileManager.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace quillo {

// Appends lines to the newest file of a directory and goes on to a new one when that is full. Every line is with the
// system when append() returns, so that a crash loses none that was written. Failures are silent; a file that could
// not be opened, or was removed, is opened again later. Not thread-safe.
class RollingLogFile {
 public:
  explicit RollingLogFile(const LogFileManager& manager);

  // `line` with its end of line.
  void append(std::string_view line);

 private:
  void openIfNeeded();
  void goOnWith(FileDescriptor file);

  LogFileManager m_manager;
  FileDescriptor m_file;
  bool m_lineIsTorn{false};  // a full disk took only the beginning of the last line
  std::optional<std::chrono::steady_clock::time_point> m_lastFailure;
};

}  // namespace quillo
