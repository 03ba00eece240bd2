#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace quillo {

// The one instance of a class that must be initialised once before it is made. Initialising may ask for the instance
// itself: it is then made in the middle, as class initialisation allows. Another thread waits meanwhile.
template <typename T>
class LazySingleton {
 public:
  // `initialize` runs in the first call only, `make` answers a std::unique_ptr<T>.
  template <typename Initialize, typename Make>
  static T& get(Initialize initialize, Make make) {
    State& state = theState();
    const std::lock_guard lock(state.mutex);
    if (!std::exchange(state.isInitialized, true)) initialize();
    if (!state.instance) state.instance = make();
    return *state.instance;
  }

 private:
  struct State {
    std::recursive_mutex mutex;
    bool isInitialized{false};
    std::unique_ptr<T> instance;
  };

  static State& theState() {
    // Given to nobody: at the end of the process it must not go before what still notifies it.
    static auto* const state = std::make_unique<State>().release();
    return *state;
  }
};

}  // namespace quillo
