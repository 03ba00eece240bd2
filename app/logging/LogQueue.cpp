#include "app/logging/LogQueue.h"

#include "app/logging/LogDistributor.h"

#include <algorithm>
#include <utility>

namespace quillo {

LogQueue::LogQueue(std::size_t capacity, LogDistributor& distributor, LogProgress& progress,
                   std::function<void()> atStart)
    : m_capacity(std::max<std::size_t>(capacity, 1)),
      m_distributor(distributor),
      m_progress(progress),
      m_thread([this, atStart = std::move(atStart)] {
        atStart();
        run();
      }) {}

LogQueue::~LogQueue() {
  {
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
  }
  m_changed.notify_one();
  m_thread.join();
}

void LogQueue::post(LogRecord record) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_lines.size() >= m_capacity) {
      m_lines.pop_front();
      ++m_progress.lost;
    }
    m_lines.push_back(std::move(record));
  }
  m_changed.notify_one();
}

void LogQueue::run() {
  std::unique_lock lock(m_mutex);
  // Ends when the queue is empty and nobody posts any more.
  for (;;) {
    m_changed.wait(lock, [this] { return m_isEnding || !m_lines.empty(); });
    if (m_lines.empty()) return;
    LogRecord line = std::move(m_lines.front());
    m_lines.pop_front();
    lock.unlock();
    m_distributor.log(std::move(line));
    lock.lock();
  }
}

}  // namespace quillo
