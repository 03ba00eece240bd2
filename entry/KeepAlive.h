#pragma once

#include <QCoreApplication>
#include <QTimer>

#include <memory>
#include <utility>

namespace quillo {

// Holds an object while one of its methods runs. Where it turns out to be the last to do so, the object goes a turn of
// the event loop later: its window may be in the middle of an event.
template <typename T>
class KeepAlive {
 public:
  explicit KeepAlive(T& object) : m_object(object.weak_from_this().lock()) {}
  ~KeepAlive() {
    if (m_object.use_count() == 1) QTimer::singleShot(0, qApp, [last = std::move(m_object)] {});
  }
  KeepAlive(const KeepAlive&) = delete;
  KeepAlive& operator=(const KeepAlive&) = delete;

 private:
  std::shared_ptr<T> m_object;
};

}  // namespace quillo
