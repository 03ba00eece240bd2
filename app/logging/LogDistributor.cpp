#include "app/logging/LogDistributor.h"

#include <poll.h>
#include <syslog.h>
#include <unistd.h>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

int systemLogPriority(LogFlag flag) {
  switch (flag) {
    case LogFlag::Error:
      return LOG_ERR;
    case LogFlag::Warning:
      return LOG_WARNING;
    case LogFlag::Info:
      return LOG_INFO;
    case LogFlag::Debug:
    case LogFlag::Verbose:
      return LOG_DEBUG;
  }
  return LOG_INFO;
}

void writeToTerminal(const QByteArray& line) {
  struct pollfd terminal {
    STDERR_FILENO, POLLOUT, 0
  };
  // A terminal that is stopped must not hold up the log file.
  if (::poll(&terminal, 1, 0) != 1 || (terminal.revents & POLLOUT) == 0) return;
  // One call a line, so that another program's lines fall between ours and not into them.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.constData(), static_cast<size_t>(line.size()));
}

}  // namespace

LogDistributor::LogDistributor(std::shared_ptr<QLLogFormatter> formatter, const LogFileManager& files,
                               LogProgress& progress)
    : m_formatter(std::move(formatter)),
      m_hasTerminal(::isatty(STDERR_FILENO) == 1),
      m_file(files),
      m_progress(progress) {
  ::openlog("quillo-agent", LOG_PID, LOG_USER);
}

LogDistributor::~LogDistributor() {
  ::closelog();
}

void LogDistributor::log(LogRecord record) noexcept {
  try {
    record.time = record.time.toLocalTime();
    distribute(record);
    noteLostLines(std::move(record));
  } catch (...) {  // Out of memory: the line is gone, the next may be written.
  }
  ++m_progress.handled;
}

void LogDistributor::distribute(const LogRecord& record) {
  const std::optional<QString> text = m_formatter->formatLogMessage(record);
  if (!text) return;
  QByteArray line = text->toUtf8();
  ::syslog(systemLogPriority(record.flag), "%s", line.constData());
  line += '\n';
  if (m_hasTerminal) writeToTerminal(line);
  m_file.append({line.constData(), static_cast<std::size_t>(line.size())});
}

void LogDistributor::noteLostLines(LogRecord record) {
  const quint64 lost = m_progress.lost;
  if (lost == m_lostAndNoted) return;
  record.flag = LogFlag::Warning;
  record.text = u"%1 log lines were lost: the queue was full"_s.arg(lost - m_lostAndNoted);
  m_lostAndNoted = lost;
  distribute(record);
}

}  // namespace quillo
