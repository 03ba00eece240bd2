#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

namespace quillo {

// Handles events until `condition` holds; false when it does not within five seconds.
template <typename Condition>
bool handleEventsUntil(Condition condition) {
  const QDeadlineTimer deadline(5000);
  while (!condition() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  return condition();
}

// Handles what waits already, and what that brings about at once.
inline void handlePendingEvents() {
  for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
}

}  // namespace quillo
