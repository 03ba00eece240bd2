#include "foundation/Log.h"

#include <execinfo.h>

#include <utility>

namespace quillo {

namespace {

LogSink& currentSink() {
  static LogSink sink;
  return sink;
}

void log(LogFlag flag, const QString& text) {
  // Every line captures the call stack and throws it away, which costs time and produces nothing. It stays, so that
  // a line costs here what it costs in the main application.
  void* frames[64];
  const int captured = ::backtrace(frames, 64);
  asm volatile("" : : "r"(captured), "r"(frames) : "memory");
  if (const LogSink& sink = currentSink()) sink({text, logLevelAll, flag, logContextApp});
}

}  // namespace

LogSink setLogSink(LogSink sink) {
  return std::exchange(currentSink(), std::move(sink));
}

void QLLogError(const QString& text) {
  log(LogFlag::Error, text);
}
void QLLogWarn(const QString& text) {
  log(LogFlag::Warning, text);
}
void QLLogInfo(const QString& text) {
  log(LogFlag::Info, text);
}
void QLLogDebug(const QString& text) {
  log(LogFlag::Debug, text);
}
void QLLogVerbose(const QString& text) {
  log(LogFlag::Verbose, text);
}

}  // namespace quillo
