#pragma once

#include "platform/Registration.h"

#include <QTimer>

#include <functional>
#include <memory>

namespace quillo {

class NotificationCenter;

// Gives back the memory that an open entry window takes, once it has been closed for a while: writing goes on where it
// is opened again before. Wakes the program once a closing.
class RestingMemory {
 public:
  // `local`: where Notice::windowWillClose is posted. `isInUse` says whether the window is open; `forget` lets go of
  // what can be read again. All must outlive the object.
  RestingMemory(NotificationCenter& local, std::function<bool()> isInUse, std::function<void()> forget);

 private:
  QTimer m_rest;
  std::unique_ptr<Registration> m_observation;
};

}  // namespace quillo
