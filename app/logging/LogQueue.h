#pragma once

#include "qlcore/QLLogFormatter.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace quillo {

class LogDistributor;
struct LogProgress;

// The way of a line from its caller to the logging thread. Bounded: a full queue drops its oldest line, so that no
// caller ever waits for a disk. The thread sleeps until there is a line.
class LogQueue {
 public:
  // All references must outlive the queue. `atStart` runs on the logging thread before the first line. Throws where
  // there can be no thread.
  LogQueue(std::size_t capacity, LogDistributor& distributor, LogProgress& progress, std::function<void()> atStart);
  // Hands on what is still queued, then ends the thread.
  ~LogQueue();
  LogQueue(const LogQueue&) = delete;
  LogQueue& operator=(const LogQueue&) = delete;

  // From any thread.
  void post(LogRecord record);

 private:
  void run();

  const std::size_t m_capacity;
  LogDistributor& m_distributor;
  LogProgress& m_progress;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<LogRecord> m_lines;
  bool m_isEnding{false};
  std::thread m_thread;
};

}  // namespace quillo
