#include "app/crash/CrashHandler.h"

#include "app/crash/CrashReportWriter.h"
#include "app/crash/CrashStack.h"
#include "app/logging/LoggingSetup.h"
#include "foundation/LoadableModule.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizer reports the others itself, on a signal stack of its own that must stay in place.
constexpr bool sanitized = true;
constexpr std::array crashSignals{SIGILL, SIGFPE};
#else
constexpr bool sanitized = false;
constexpr std::array crashSignals{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
#endif

// Seconds for the stack. Looking symbols up takes memory and locks that the crash may have left unusable.
constexpr unsigned int stackTimeLimit = 5;
constexpr std::chrono::milliseconds flushTimeLimit{500};
// The symbols of a large program are read on this stack; memory that is not touched is not used.
constexpr std::size_t alternateStackSize = std::size_t{1024} * 1024;

// All that the handler needs, laid out beforehand: it must not allocate.
struct HandlerState {
  // Raw, and never closed: an owner of static lifetime would close it while a crash at the program's end needs it.
  int directory{-1};
  std::array<char, 128> fileName{};
  std::array<char, 2048> preamble{};
  std::array<char, PATH_MAX> stackModule{};
  std::atomic<int> reportingThread{0};  // the first to crash; 0 while all is well
  std::atomic<int> signal{SIGABRT};     // what it dies of
  std::atomic<bool> reported{false};
};

HandlerState state;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

std::string_view nameOfSignal(int signal) {
  switch (signal) {
    case SIGSEGV:
      return "SIGSEGV";
    case SIGBUS:
      return "SIGBUS";
    case SIGILL:
      return "SIGILL";
    case SIGFPE:
      return "SIGFPE";
    case SIGABRT:
      return "SIGABRT";
    default:
      return "signal";
  }
}

void restoreDefaultAction(int signal) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  ::sigaction(signal, &action, nullptr);
}

// Ends the process with the signal, from wherever the thread stands.
[[noreturn]] void dieOf(int signal) {
  restoreDefaultAction(signal);
  sigset_t only;
  ::sigemptyset(&only);
  ::sigaddset(&only, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
  ::raise(signal);
  ::_exit(128 + signal);
}

void giveUpOnStack(int /*signal*/) {
  flushLog(flushTimeLimit);
  dieOf(state.signal);
}

// Whatever program asked for SIGALRM before, and had it blocked: now it is the way out of a hang.
void startTimeLimit() {
  struct sigaction action {};
  action.sa_handler = giveUpOnStack;
  action.sa_flags = SA_ONSTACK;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(SIGALRM, &action, nullptr);
  sigset_t alarmOnly;
  ::sigemptyset(&alarmOnly);
  ::sigaddset(&alarmOnly, SIGALRM);
  ::pthread_sigmask(SIG_UNBLOCK, &alarmOnly, nullptr);
  ::alarm(stackTimeLimit);
}

// True for the one thread that writes the report. The same thread for the second time has crashed in the handler, and
// the process ends at once; another thread waits for the end that the first one brings.
bool claimReport(int signal) {
  const int self = ::gettid();
  int nobody = 0;
  if (state.reportingThread.compare_exchange_strong(nobody, self)) {
    state.signal = signal;
    return true;
  }
  if (nobody == self) dieOf(state.signal);
  constexpr struct timespec second { 1, 0 };
  for (unsigned int waited = 0; waited < stackTimeLimit + 2; ++waited) ::nanosleep(&second, nullptr);
  dieOf(signal);
}

// Loading the module now takes nothing, in memory and locks, that the names of functions would not take: the program
// does without it all the time that it does not crash.
void writeSymbolizedStack(const CrashReportWriter& writer, int file, void* context) {
  void* const module = ::dlopen(state.stackModule.data(), RTLD_NOW | RTLD_LOCAL);
  auto* const write =
      module ? reinterpret_cast<WriteSymbolizedStack*>(::dlsym(module, "quilloWriteSymbolizedStack")) : nullptr;
  if (write != nullptr)
    return write(context, file,
                 [](int descriptor, std::string_view text) { CrashReportWriter(descriptor).text(text); });
  const char* const reason = ::dlerror();
  writer.text("not known: ").text(reason == nullptr ? "no such function" : reason).text("\n");
}

void writeReport(std::string_view cause, const siginfo_t* info, void* context) {
  // Raw: an owner would be of no use, as the process may end in giveUpOnStack(), where nothing is destroyed.
  const int file =
      ::openat(state.directory, state.fileName.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
  // First what needs nothing but system calls, then what may fail.
  const CrashReportWriter writer(file);
  writer.text("Cause: ").text(cause);
  if (info != nullptr) {
    writer.text("\nCode: ").number(info->si_code);
    writer.text("\nAddress: ").address(info->si_addr);
  }
  writer.text("\nTime: ").time(::time(nullptr));
  writer.text("\nProcess: ").number(::getpid()).text("\nThread: ").number(::gettid()).text("\n");
  writer.text(state.preamble.data());
  flushLog(flushTimeLimit);
  if (file < 0) return;
  startTimeLimit();
  writer.text("\nRaw stack:\n");
  std::array<void*, 128> frames{};
  const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  ::backtrace_symbols_fd(frames.data(), count, file);
  writer.text("\nStack, innermost first:\n");
  writeSymbolizedStack(writer, file, context);
  writer.text("\nEnd of report\n");
  ::alarm(0);
  ::close(file);
}

void handleSignal(int signal, siginfo_t* info, void* context) {
  // An exception that nobody caught ends in abort(), with its report written.
  if (!state.reported && claimReport(signal)) writeReport(nameOfSignal(signal), info, context);
  state.reported = true;
  // The signal is blocked here, so this one strikes on return, where the first one did: the core dump shows the crash.
  restoreDefaultAction(signal);
  ::raise(signal);
}

class BoundedText {
 public:
  void append(std::string_view text) {
    const std::size_t length = std::min(text.size(), m_text.size() - m_length);
    std::copy_n(text.data(), length, m_text.data() + m_length);
    m_length += length;
  }
  [[nodiscard]] std::string_view view() const { return {m_text.data(), m_length}; }

 private:
  std::array<char, 1024> m_text{};
  std::size_t m_length{0};
};

void appendCurrentException(BoundedText& text) {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return text.append("terminate without an exception");
  int status = -1;
  char* const readable = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
  text.append("uncaught exception ");
  text.append(readable == nullptr ? type->name() : readable);
  std::free(readable);
  try {
    std::rethrow_exception(std::current_exception());
  } catch (const std::exception& exception) {
    text.append(": ");
    text.append(exception.what());
  } catch (...) {  // A type without a text.
  }
}

[[noreturn]] void handleTerminate() {
  if (claimReport(SIGABRT)) {
    BoundedText cause;
    appendCurrentException(cause);
    writeReport(cause.view(), nullptr, nullptr);
    state.reported = true;
  }
  std::abort();
}

bool openDirectory(const QString& path) {
  QDir().mkpath(QFileInfo(path).path());
  const QByteArray encoded = QFile::encodeName(path);
  ::mkdir(encoded.constData(), 0700);
  state.directory = ::open(encoded.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return state.directory >= 0;
}

void layOutTexts(const QString& preamble) {
  const QString start = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
  const QByteArray name = u"quillo-agent-%1-%2%3"_s.arg(start).arg(::getpid()).arg(crashReportSuffix).toUtf8();
  qstrncpy(state.fileName.data(), name.constData(), state.fileName.size());
  const QByteArray module = QFile::encodeName(LoadableModule::path(u"quillo-crash-stack"_s));
  qstrncpy(state.stackModule.data(), module.constData(), state.stackModule.size());
  qstrncpy(state.preamble.data(), preamble.toUtf8().constData(), state.preamble.size());
}

// With a page below it that cannot be written, as other stacks have.
[[maybe_unused]] void giveThreadAlternateStack() {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  void* const memory = ::mmap(nullptr, alternateStackSize + page, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) return;
  ::mprotect(memory, page, PROT_NONE);
  stack_t stack{};
  stack.ss_sp = static_cast<char*>(memory) + page;
  stack.ss_size = alternateStackSize;
  ::sigaltstack(&stack, nullptr);
}

}  // namespace

bool installCrashHandler(const CrashHandlerSettings& settings) {
  if (state.directory >= 0 || settings.reportsDirectory.isEmpty() || !openDirectory(settings.reportsDirectory)) {
    return false;
  }
  layOutTexts(settings.preamble);
  // The first call loads a library; the one in the handler must not. No frame is asked for: finding one reads the
  // tables of the whole program into memory.
  void* frame = nullptr;
  ::backtrace(&frame, 0);
  if (!sanitized) giveThreadAlternateStack();
  struct sigaction action {};
  action.sa_sigaction = handleSignal;
  action.sa_flags = SA_SIGINFO | (sanitized ? 0 : SA_ONSTACK);
  ::sigemptyset(&action.sa_mask);
  for (const int signal : crashSignals) ::sigaction(signal, &action, nullptr);
  if (settings.interceptExceptions) std::set_terminate(handleTerminate);
  return true;
}

}  // namespace quillo
