#pragma once

#include "app/logging/RollingLogFile.h"
#include "qlcore/QLLogFormatter.h"

#include <atomic>
#include <memory>

namespace quillo {

// How far the lines have come. Read from signal handlers: atomics only.
struct LogProgress {
  std::atomic<quint64> posted{0};   // handed over by the callers
  std::atomic<quint64> handled{0};  // seen by the logging thread, shown or not
  std::atomic<quint64> lost{0};     // pushed out of the full queue
  std::atomic<int> loggingThread{0};
};

// What the logging thread gives each line to: it has the one formatter lay the line out, or drop it, and passes the
// result to the system log, the terminal and the log file. One that fails does not keep a line from the others.
// Standard error counts only where it is a terminal: what the desktop reads of it goes to the system log a second time.
class LogDistributor {
 public:
  LogDistributor(std::shared_ptr<QLLogFormatter> formatter, const LogFileManager& files, LogProgress& progress);
  ~LogDistributor();
  LogDistributor(const LogDistributor&) = delete;
  LogDistributor& operator=(const LogDistributor&) = delete;

  // Loses the line, and nothing else, where memory is short.
  void log(LogRecord record) noexcept;

 private:
  void distribute(const LogRecord& record);
  void noteLostLines(LogRecord record);

  std::shared_ptr<QLLogFormatter> m_formatter;
  bool m_hasTerminal;
  RollingLogFile m_file;
  LogProgress& m_progress;
  quint64 m_lostAndNoted{0};
};

}  // namespace quillo
