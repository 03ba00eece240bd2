#pragma once

#include <QList>
#include <QString>

#include <functional>

namespace quillo {

struct RunningApplication {
  QString bundleIdentifier;
  qint64 processIdentifier{0};

  bool operator==(const RunningApplication&) const = default;
};

// The programs of this product that run in the user's session, found by the bundle identifier they registered. Without
// a session nothing is found. Main thread only.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Lets others find this process and ask it to end. `onTerminate` is called from the event loop, after the asker has
  // its answer. False, with a line in the log, when others cannot find it; the program works on without.
  virtual bool registerSelf(const QString& bundleIdentifier, std::function<void()> onTerminate) = 0;

  // All processes registered as `bundleIdentifier`, this one included, in the order of their process identifiers.
  [[nodiscard]] virtual QList<RunningApplication> running(const QString& bundleIdentifier) const = 0;

  // Asks politely and does not wait. True when the request was sent; the other may still take its time, or refuse.
  // Copies of one program that end each other as they start would leave none when they start at the same moment: where
  // the other is a copy of this process and joined the session after it, this process ends in its place.
  virtual bool terminate(const RunningApplication& application) = 0;

  [[nodiscard]] virtual qint64 currentProcessIdentifier() const = 0;
};

}  // namespace quillo
