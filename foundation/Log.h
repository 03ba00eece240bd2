#pragma once

#include <QString>

#include <functional>

namespace quillo {

// The flag bits of the log levels.
enum class LogFlag : int { Error = 1, Warning = 2, Info = 4, Debug = 8, Verbose = 16 };

inline constexpr int logLevelAll = 31;
// The context that every line of the program carries; the log formatter knows it under the name "App".
inline constexpr int logContextApp = 300;

// One line on its way to the log, as the logging functions hand it over.
struct LogMessage {
  QString text;
  int level{logLevelAll};
  LogFlag flag{LogFlag::Info};
  int context{logContextApp};
};

// Receives every line, on the thread that logs; it must be callable from any thread. Without one, lines go nowhere, so
// that a command-line tool and the tests stay quiet.
using LogSink = std::function<void(const LogMessage&)>;
// Replaces the receiver and answers the one before. Not to be called while other threads log.
LogSink setLogSink(LogSink sink);

void QLLogError(const QString& text);
void QLLogWarn(const QString& text);
void QLLogInfo(const QString& text);
void QLLogDebug(const QString& text);
void QLLogVerbose(const QString& text);

// The pattern "%s %@": a method's full name, then a message.
inline void QLLogInfo(QLatin1StringView method, const QString& text) {
  QLLogInfo(QString(method) + u' ' + text);
}

}  // namespace quillo
