#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace quillo {

// The one instance of a class that must be initialised once before the first is made. Initialising may ask for the
// instance itself: it is then made in the middle, as class initialisation allows. Another thread waits meanwhile.
template <typename Manager>
class SharedInstance {
 public:
  // `initialize` runs in the first call only, `make` answers a std::unique_ptr<Manager>.
  template <typename Initialize, typename Make>
  Manager& get(Initialize initialize, Make make) {
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_isInitialized, true)) initialize();
    if (!m_instance) m_instance = make();
    return *m_instance;
  }

  void reset() {
    const std::lock_guard lock(m_mutex);
    m_instance.reset();
    m_isInitialized = false;
  }

 private:
  std::recursive_mutex m_mutex;
  bool m_isInitialized{false};
  std::unique_ptr<Manager> m_instance;
};

}  // namespace quillo
