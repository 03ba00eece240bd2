#include "app/LogDistributor.h"

#include <spdlog/details/log_msg.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/sinks/syslog_sink.h>

#include <poll.h>
#include <unistd.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

LogFlag flagOfSpdlogLevel(spdlog::level::level_enum level) {
  switch (level) {
    case spdlog::level::trace:
      return LogFlag::Verbose;
    case spdlog::level::debug:
      return LogFlag::Debug;
    case spdlog::level::warn:
      return LogFlag::Warning;
    case spdlog::level::err:
    case spdlog::level::critical:
      return LogFlag::Error;
    default:
      return LogFlag::Info;
  }
}

LogRecord recordOfMessage(const spdlog::details::log_msg& message) {
  const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(message.time.time_since_epoch());
  return {QString::fromUtf8(message.payload.data(), static_cast<qsizetype>(message.payload.size())),
          flagOfSpdlogLevel(message.level), message.source.line,
          QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::LocalTime), message.thread_id};
}

// A terminal that is stopped, or a pipe that nobody reads, must not hold up the log file.
bool terminalTakesMore() {
  struct pollfd terminal {
    STDERR_FILENO, POLLOUT, 0
  };
  return ::poll(&terminal, 1, 0) == 1 && (terminal.revents & POLLOUT) != 0;
}

void passOn(spdlog::sinks::sink& logger, const spdlog::details::log_msg& message) noexcept {
  try {
    logger.log(message);
  } catch (...) {  // Nowhere to report it to.
  }
}

}  // namespace

spdlog::level::level_enum spdlogLevelOfFlag(LogFlag flag) {
  switch (flag) {
    case LogFlag::Error:
      return spdlog::level::err;
    case LogFlag::Warning:
      return spdlog::level::warn;
    case LogFlag::Info:
      return spdlog::level::info;
    case LogFlag::Debug:
      return spdlog::level::debug;
    case LogFlag::Verbose:
      return spdlog::level::trace;
  }
  return spdlog::level::info;
}

LogDistributor::LogDistributor(std::shared_ptr<QLLogFormatter> formatter, const LogFileManager& files,
                               LogProgress& progress)
    : m_formatter(std::move(formatter)),
      m_systemLog(std::make_shared<spdlog::sinks::syslog_sink_st>("quillo-agent", LOG_PID, LOG_USER, false)),
      m_terminal(std::make_shared<spdlog::sinks::stderr_sink_st>()),
      m_file(files),
      m_progress(progress) {
  m_terminal->set_pattern("%v");
}

void LogDistributor::log(const spdlog::details::log_msg& message) {
  try {
    distribute(recordOfMessage(message), message);
    noteLostLines(message);
  } catch (...) {  // Out of memory: the line is gone, the next may be written.
  }
  ++m_progress.handled;
}

void LogDistributor::distribute(const LogRecord& record, const spdlog::details::log_msg& message) {
  const std::optional<QString> text = m_formatter->formatLogMessage(record);
  if (!text) return;
  std::string line = text->toStdString();
  spdlog::details::log_msg formatted = message;
  formatted.payload = line;
  passOn(*m_systemLog, formatted);
  if (terminalTakesMore()) passOn(*m_terminal, formatted);
  line += '\n';
  m_file.append(line);
}

void LogDistributor::noteLostLines(const spdlog::details::log_msg& message) {
  const quint64 lost = m_progress.lost;
  if (lost == m_lostAndNoted) return;
  LogRecord record = recordOfMessage(message);
  record.flag = LogFlag::Warning;
  record.text = u"%1 log lines were lost: the queue was full"_s.arg(lost - m_lostAndNoted);
  m_lostAndNoted = lost;
  spdlog::details::log_msg note = message;
  note.level = spdlog::level::warn;
  distribute(record, note);
}

}  // namespace quillo
