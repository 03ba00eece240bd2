#pragma once

#include "qlcore/QLLocation.h"

#include <functional>
#include <memory>

namespace quillo {

// Looks for where this computer is. One search at a time.
//
// A handler is called from the event loop of the main thread, never from inside a method of the service, and not any
// more once the search was stopped, another one started or the service was destroyed. It may do all three itself.
class LocationService {
 public:
  // Receives the fix, or null where there is none, and whether the search is over. Each better fix is a new object; one
  // that is handed over a second time (the last one, when the search ends without a better one) is the same object.
  using Handler = std::function<void(const std::shared_ptr<const QLLocation>& location, bool isFinal)>;

  virtual ~LocationService() = default;

  // Whether the computer has such a service and its user left it on. Prompts nobody.
  [[nodiscard]] virtual bool locationServicesEnabled() const = 0;
  // Whether this program may use it. Prompts nobody.
  [[nodiscard]] virtual bool isAuthorized() const = 0;

  [[nodiscard]] virtual bool isSearching() const = 0;
  // Searches for at most `seconds`. The handler hears every fix that is at least as good as those before, and once that
  // the search is over: with the best fix so far, or with null.
  virtual void startWithTimeout(double seconds, Handler handler) = 0;
  virtual void stop() = 0;
  // Of the best fix of this search or the last one: a radius in metres; infinite where it is not known or there is
  // none.
  [[nodiscard]] virtual double horzAccuracy() const = 0;
};

}  // namespace quillo
