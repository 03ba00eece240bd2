#pragma once

#include "foundation/Log.h"

#include <QDateTime>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

namespace quillo {

// One line as a logger receives it, with what was noted at the call.
struct LogRecord {
  QString text;
  LogFlag flag{LogFlag::Info};
  int context{logContextApp};
  QDateTime time;  // shown in the zone that it carries
  quint64 threadIdentifier{0};
};

// Lays a record out as one line:
//
//     2014-03-10 21:00:00.123 +0100 info    App [4711] Log file: /home/...
//
// and decides whether it is shown at all: the callers pass every level, so the filter is here. May be used from any
// thread.
class QLLogFormatter {
 public:
  // A formatter of its own for each call; it shows errors, warnings and information.
  [[nodiscard]] static std::shared_ptr<QLLogFormatter> defaultFormatter();

  // Gives a context the name that its lines carry; the last name given counts. A context without one shows as number.
  static void registerName(const QString& name, int context);

  static constexpr int defaultLogLevel =
      static_cast<int>(LogFlag::Error) | static_cast<int>(LogFlag::Warning) | static_cast<int>(LogFlag::Info);
  // Flag bits of LogFlag; logLevelAll shows everything.
  void setLogLevel(int level) { m_logLevel = level; }
  [[nodiscard]] int logLevel() const { return m_logLevel; }

  // The line without an end of line; nothing where the level hides it. Line breaks and other control characters of the
  // text are escaped, so that one record is always one line and no text can steer a terminal.
  [[nodiscard]] std::optional<QString> formatLogMessage(const LogRecord& record) const;

 private:
  std::atomic<int> m_logLevel{defaultLogLevel};
};

// What is known about the program and the machine, on one line, for the start of a session: product and version as
// QCoreApplication knows them, Qt, operating system, kernel, processor. No user name, host name or path.
[[nodiscard]] QString QLLogHeaderMessage();

}  // namespace quillo
