#include "app/logging/LoggingSetup.h"

#include "app/logging/LogDistributor.h"
#include "app/logging/LogFileManager.h"
#include "app/logging/LogQueue.h"
#include "foundation/Log.h"
#include "qlcore/QLLogFormatter.h"

#include <QDir>

#include <pthread.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Before main(), and so before anything logs.
[[maybe_unused]] const bool contextIsNamed = [] {
  QLLogFormatter::registerName(u"App"_s, logContextApp);
  return true;
}();

// The members end in an order that matters: the queue's thread is joined before what it writes to goes.
struct LoggingSession {
  QString directory;
  std::shared_ptr<QLLogFormatter> formatter;
  LogProgress progress;
  std::unique_ptr<LogDistributor> distributor;
  std::unique_ptr<LogQueue> queue;
};

// A plain pointer, because the crash handler reads it; it stays reachable when the process ends without closeLog().
std::atomic<LoggingSession*> currentSession{nullptr};

// The logging thread takes no signal meant for the process, and a write to a closed pipe is an error for it, not the
// end of the program. A crash of its own is still a crash.
void blockSignals() {
  sigset_t signals;
  ::sigfillset(&signals);
  for (const int crash : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS}) ::sigdelset(&signals, crash);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void post(LoggingSession& session, const LogMessage& message) noexcept {
  try {
    // Asked of the system once a thread.
    thread_local const auto thread = static_cast<quint64>(::gettid());
    ++session.progress.posted;
    session.queue->post({message.text, message.flag, message.context, QDateTime::currentDateTimeUtc(), thread});
  } catch (...) {  // Out of memory: the line is lost, the program goes on.
  }
}

std::unique_ptr<LoggingSession> makeSession(const QString& directory, std::shared_ptr<QLLogFormatter> formatter,
                                            const LogFileManager& files, std::size_t queueLength) {
  try {
    auto session = std::make_unique<LoggingSession>();
    session->directory = directory;
    session->formatter = formatter;
    LogProgress& progress = session->progress;
    session->distributor = std::make_unique<LogDistributor>(std::move(formatter), files, progress);
    session->queue = std::make_unique<LogQueue>(queueLength, *session->distributor, progress, [&progress] {
      blockSignals();
      progress.loggingThread = ::gettid();
    });
    return session;
  } catch (...) {  // No memory or no thread: the program runs without a log.
    return nullptr;
  }
}

}  // namespace

void setUpLogging(const QUrl& directory, bool verbose, std::size_t queueLength) {
  closeLog();
  const std::shared_ptr<QLLogFormatter> formatter = QLLogFormatter::defaultFormatter();
  if (verbose) formatter->setLogLevel(logLevelAll);
  const QString path = directory.isEmpty() ? QString() : QDir::cleanPath(directory.toLocalFile());
  const LogFileManager files(path);
  files.createDirectory();
  LoggingSession* const session = makeSession(path, formatter, files, queueLength).release();
  if (session == nullptr) return;
  currentSession = session;
  setLogSink([session](const LogMessage& message) { post(*session, message); });

  QLLogInfo(u"**** NEW SESSION ****"_s);
  QLLogInfo(QLLogHeaderMessage());
  // Without any log file the path is shown as the platform shows an absent object.
  QLLogInfo(u"Log file: "_s + files.sortedLogFilePaths().value(0, u"(null)"_s));
}

void setLogIsVerbose(bool isVerbose) {
  const LoggingSession* const session = currentSession;
  const int level = isVerbose ? logLevelAll : QLLogFormatter::defaultLogLevel;
  if (!session || session->formatter->logLevel() == level) return;
  session->formatter->setLogLevel(level);
  // Whoever has switched it on sees that it reached this program.
  QLLogDebug(u"Everything is logged from now on"_s);
}

QString logDirectory() {
  const LoggingSession* const session = currentSession;
  return session == nullptr ? QString() : session->directory;
}

bool flushLog(std::chrono::milliseconds limit) noexcept {
  const LoggingSession* const session = currentSession;
  if (session == nullptr) return true;
  const LogProgress& progress = session->progress;
  // The logging thread cannot wait for itself.
  if (progress.loggingThread == ::gettid()) return false;
  const quint64 wanted = progress.posted;
  constexpr struct timespec pause { 0, 1'000'000 };
  // Ends after as many pauses of a millisecond as the limit has.
  for (auto left = limit;; left -= std::chrono::milliseconds(1)) {
    if (progress.handled + progress.lost >= wanted) return true;
    if (left.count() <= 0) return false;
    ::nanosleep(&pause, nullptr);
  }
}

void closeLog() {
  if (currentSession == nullptr) return;
  setLogSink({});
  flushLog();
  delete currentSession.exchange(nullptr);
}

}  // namespace quillo
