// What a log call costs its caller, with and without the loggers behind it. The difference is ours: the stack that
// every call captures and throws away is in both.

#include "app/logging/LoggingSetup.h"
#include "foundation/Log.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

const QString& text() {
  static const QString line = u"Failed to read property list file:///home/someone/Data/quillo.plist - no such file"_s;
  return line;
}

// The loggers on a directory that goes with the object, with the terminal turned to nowhere.
class Loggers {
 public:
  Loggers() {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
    setUpLogging(QUrl::fromLocalFile(m_directory.path()), /*verbose=*/false);
  }
  ~Loggers() {
    closeLog();
    ::dup2(m_terminal, STDERR_FILENO);
    ::close(m_terminal);
  }
  Loggers(const Loggers&) = delete;
  Loggers& operator=(const Loggers&) = delete;

 private:
  QTemporaryDir m_directory;
  int m_terminal{::dup(STDERR_FILENO)};
};

void BM_CallWithoutLoggers(benchmark::State& state) {
  setLogSink({});
  for (auto _ : state) QLLogInfo(text());
}
BENCHMARK(BM_CallWithoutLoggers);

// In bursts that the queue takes, as the program logs; emptying it is not the caller's time.
void BM_CallWithLoggers(benchmark::State& state) {
  const Loggers loggers;
  constexpr int burst = 256;
  while (state.KeepRunningBatch(burst)) {
    for (int line = 0; line < burst; ++line) QLLogInfo(text());
    state.PauseTiming();
    flushLog();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_CallWithLoggers);

// The caller's time and the logging thread's together: how many lines a second reach the file.
void BM_LineToFile(benchmark::State& state) {
  const Loggers loggers;
  constexpr int burst = 1024;
  while (state.KeepRunningBatch(burst)) {
    for (int line = 0; line < burst; ++line) QLLogInfo(text());
    flushLog();
  }
}
BENCHMARK(BM_LineToFile)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
