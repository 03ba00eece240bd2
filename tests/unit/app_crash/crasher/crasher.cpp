// crasher DIRECTORY MANNER: logs into DIRECTORY/Agent, starts the crash-report manager and dies as told. "quit" lives.

#include "app/crash/CrashReportManager.h"
#include "app/logging/LoggingSetup.h"
#include "foundation/Log.h"

#include <QCoreApplication>
#include <QDir>

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

enum class AllocatorState { Sound, Crashes, Hangs };
volatile AllocatorState allocatorState = AllocatorState::Sound;

}  // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// As after a crash inside the allocator: the handler's own use of it crashes too, or waits for a lock for ever.
void* operator new(std::size_t size) {
  if (allocatorState == AllocatorState::Crashes) ::raise(SIGSEGV);
  while (allocatorState == AllocatorState::Hangs) ::pause();
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
#endif

namespace {

[[gnu::noinline]] void crashBySegfault() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

[[gnu::noinline]] void crashByAbort() {
  std::abort();
}

[[gnu::noinline]] void crashByException() {
  throw std::runtime_error("the text of the exception");
}

[[gnu::noinline]] void crashByArithmetic() {
  ::raise(SIGFPE);
}

[[gnu::noinline]] int crashByOverflow(int depth) {  // NOLINT(misc-no-recursion): that is what it is for
  volatile char frame[4096];
  frame[0] = static_cast<char>(depth);
  if (depth < 0) return frame[0];
  return crashByOverflow(depth + 1) + frame[0];
}

// Strikes the only thread besides this one, once it is at its work.
void crashLoggingThread() {
  quillo::flushLog();
  const QStringList threads = QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
  for (const QString& thread : threads) {
    if (thread.toInt() != ::gettid()) ::tgkill(::getpid(), thread.toInt(), SIGSEGV);
  }
  ::pause();
}

void crash(const QString& manner) {
  if (manner == u"segfault") crashBySegfault();
  if (manner == u"abort") crashByAbort();
  if (manner == u"exception") crashByException();
  if (manner == u"arithmetic") crashByArithmetic();
  if (manner == u"overflow") crashByOverflow(0);
  if (manner == u"logger") crashLoggingThread();
  // Else the logging thread could be the one that the allocator strikes first.
  if (manner == u"twice" || manner == u"hang") quillo::flushLog();
  if (manner == u"twice") allocatorState = AllocatorState::Crashes;
  if (manner == u"hang") allocatorState = AllocatorState::Hangs;
  if (manner == u"twice" || manner == u"hang") crashByAbort();
}

class Delegate final : public quillo::BITCrashReportManagerDelegate {
 public:
  void showMainApplicationWindow() override { std::puts("window"); }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  constexpr struct rlimit noCore { 0, 0 };
  ::setrlimit(RLIMIT_CORE, &noCore);
  const QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationVersion(u"1.2.3"_s);
  const QString directory = QString::fromLocal8Bit(argv[1]);

  quillo::setUpLogging(QUrl::fromLocalFile(directory + u"/Agent"_s), /*verbose=*/false);
  Delegate delegate;
  auto& manager = quillo::CrashReportManager::sharedManager();
  manager.configureWithIdentifier(u"0123456789abcdef"_s, u"A Company"_s, &delegate);
  manager.setExceptionInterceptionEnabled(true);
  manager.startManager();
  manager.startManager();
  std::fflush(stdout);

  for (int line = 0; line < 500; ++line) quillo::QLLogInfo(u"line %1"_s.arg(line));
  quillo::QLLogInfo(u"the last line"_s);
  crash(QString::fromLocal8Bit(argv[2]));
  quillo::closeLog();
  return 0;
}
