#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace quillo {

// Runs the event loop until `condition` holds. False when it does not within the time.
template <typename Condition>
bool runUntil(Condition condition, int milliseconds = 5000) {
  const QDeadlineTimer deadline(milliseconds);
  // An event at the deadline, for the loop to wait for.
  QTimer::singleShot(milliseconds, qApp, [] {});
  while (!condition() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return condition();
}

}  // namespace quillo
