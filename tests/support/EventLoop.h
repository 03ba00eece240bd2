#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace quillo {

// Handles events until `condition` holds; false when it does not within five seconds.
template <typename Condition>
bool runUntil(Condition condition) {
  constexpr int milliseconds = 5000;
  const QDeadlineTimer deadline(milliseconds);
  // An event at the deadline, for the loop to wait for.
  QTimer::singleShot(milliseconds, qApp, [] {});
  while (!condition() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return condition();
}

// Handles what waits already, and what that brings about at once.
inline void handlePendingEvents() {
  for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
}

}  // namespace quillo
