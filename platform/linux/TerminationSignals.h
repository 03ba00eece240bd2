#pragma once

#include "foundation/FileDescriptor.h"

#include <functional>
#include <memory>

class QSocketNotifier;

namespace quillo {

// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread, so that the program ends by its own door. One object
// at a time; a second signal while the first is being dealt with ends the process as usual.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> onSignal);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  FileDescriptor m_descriptor;
  std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace quillo
