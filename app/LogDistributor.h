#pragma once

#include "app/RollingLogFile.h"
#include "qlcore/QLLogFormatter.h"

#include <spdlog/sinks/sink.h>

#include <atomic>
#include <memory>
#include <string>

namespace quillo {

// How far the lines have come. Read from signal handlers: atomics only.
struct LogProgress {
  std::atomic<quint64> posted{0};   // handed over by the callers
  std::atomic<quint64> handled{0};  // seen by the logging thread, shown or not
  std::atomic<quint64> lost{0};     // pushed out of the full queue
  std::atomic<int> loggingThread{0};
};

// What the logging thread gives each line to: it has the one formatter lay the line out, or drop it, and passes the
// result to the system log, the terminal and the log file. A logger that fails does not keep a line from the others.
// The context of a line travels as the "line" of its source location, which nothing else uses.
class LogDistributor final : public spdlog::sinks::sink {
 public:
  LogDistributor(std::shared_ptr<QLLogFormatter> formatter, const LogFileManager& files, LogProgress& progress);

  void log(const spdlog::details::log_msg& message) override;
  void flush() override {}
  void set_pattern(const std::string& /*pattern*/) override {}
  void set_formatter(std::unique_ptr<spdlog::formatter> /*formatter*/) override {}

 private:
  void distribute(const LogRecord& record, const spdlog::details::log_msg& message);
  void noteLostLines(const spdlog::details::log_msg& message);

  std::shared_ptr<QLLogFormatter> m_formatter;
  std::shared_ptr<spdlog::sinks::sink> m_systemLog;
  std::shared_ptr<spdlog::sinks::sink> m_terminal;
  RollingLogFile m_file;
  LogProgress& m_progress;
  quint64 m_lostAndNoted{0};
};

[[nodiscard]] spdlog::level::level_enum spdlogLevelOfFlag(LogFlag flag);

}  // namespace quillo
