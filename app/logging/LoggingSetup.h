#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <cstddef>

namespace quillo {

// Sends every line of the program to the system log, the terminal (standard error where it is one) and the log files of
// `directory`, in one layout, and begins the session with three lines: the session mark, the header and the path of the
// log file. With `verbose` every level is shown, otherwise errors, warnings and information.
//
// Lines are formatted and written on a thread of their own. A caller never waits for it: when `queueLength` lines are
// waiting, the oldest of them is lost, and a warning says later how many were. A directory or file that cannot be made
// is not reported; the other two loggers work without it. Call it once, before other threads log; it ends an earlier
// set-up.
void setUpLogging(const QUrl& directory, bool verbose, std::size_t queueLength = 2048);

// Shows every level from now on, or no longer.
void setLogIsVerbose(bool isVerbose);

// The directory of the set-up in force, made or not; empty where there is none.
[[nodiscard]] QString logDirectory();

// Waits until every line logged before the call is written, but never longer than `limit`; false when lines may be
// left. Takes no lock and allocates nothing, so that a signal handler may call it even when the crash was in the
// logger.
bool flushLog(std::chrono::milliseconds limit = std::chrono::seconds(2)) noexcept;

// Writes what is waiting and ends the loggers; lines logged later go nowhere. For the end of the process, when no other
// thread logs any more.
void closeLog();

}  // namespace quillo
