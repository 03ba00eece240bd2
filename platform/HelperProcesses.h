#pragma once

#include <QString>

namespace quillo {

// The processes of a helper program in the user's session, which a command starts, waits for and ends. Each wait is
// bounded; what failed is said in `reason`.
class HelperProcesses {
 public:
  virtual ~HelperProcesses() = default;

  // Starts one more, now and only now.
  virtual bool start(QString* reason) = 0;
  // Waits until the one that was started, here or as a login item, answers others. Where none was, one that runs
  // already has to.
  virtual bool waitForAnswer(QString* reason) = 0;
  // Asks all of them to end, however they were started, and waits until none is left.
  virtual bool end(QString* reason) = 0;
};

}  // namespace quillo
