#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace quillo {

// Handles events until `condition` holds; false when it does not within five seconds.
template <typename Condition>
bool runUntil(Condition condition) {
  const QDeadlineTimer deadline(5000);
  // Without an event the loop would wait for longer than that.
  QTimer wakes;
  wakes.start(100);
  while (!condition() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return condition();
}

// Handles what waits already, and what that brings about at once.
inline void handlePendingEvents() {
  for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
}

}  // namespace quillo
