#pragma once

#include <QString>

namespace quillo {

// What a crash report begins with, besides the crash itself.
struct CrashHandlerSettings {
  QString reportsDirectory;  // absolute; made when it is not there
  QString preamble;          // lines about the program
  bool interceptExceptions{false};
};

// The name that every report not yet dealt with ends in.
inline constexpr QLatin1StringView crashReportSuffix{".crash"};

// From now on a crash of this process (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT and, where that was asked for, an
// exception that nobody catches) leaves a report "quillo-agent-START-PID.crash" in the directory, readable for its user
// only. Then the log is flushed and the signal takes its usual course: exit status and core dump are those of the
// signal. A stack overflow is reported for the calling thread only, which is the one that gets a stack of its own for
// it. Programs built with a sanitizer leave SIGSEGV, SIGBUS and SIGABRT to it.
//
// False when the directory cannot be used; then nothing is installed. Once per process; a second call is refused.
bool installCrashHandler(const CrashHandlerSettings& settings);

}  // namespace quillo
