#pragma once

#include "foundation/FileDescriptor.h"
#include "platform/HelperProcesses.h"
#include "platform/LoginItems.h"
#include "platform/RunningApplications.h"

#include <QDeadlineTimer>
#include <QStringList>

#include <functional>
#include <optional>

namespace quillo {

class SessionBusApplications;

// Helper processes as they show on the session bus. Nothing polls: the bus tells who comes and goes, the kernel when
// the one that was started is gone. Needs a QCoreApplication. Main thread only.
class SessionBusHelper final : public HelperProcesses {
 public:
  // `applications` must outlive the object.
  SessionBusHelper(SessionBusApplications& applications, LoginHelper helper);

  bool start(QString* reason) override;
  bool waitForAnswer(QString* reason) override;
  bool end(QString* reason) override;

  // For whoever starts the helper as a login item: it is waited for as one started here.
  bool launch(const QString& program, const QStringList& arguments);

 private:
  [[nodiscard]] QList<RunningApplication> running() const;
  // Those that waitForAnswer() may take.
  [[nodiscard]] QList<RunningApplication> awaited() const;
  [[nodiscard]] bool launchedHasEnded() const;
  [[nodiscard]] QString couldNotBeStarted() const;
  // Asks `condition` whenever a helper joins or leaves the bus, or the one launched is gone.
  bool waitUntil(const std::function<bool()>& condition, const QDeadlineTimer& deadline);

  struct Launch {
    bool succeeded;
    QList<RunningApplication> before;
    // Readable once the process is gone; none where it was gone at once.
    FileDescriptor process;
  };

  SessionBusApplications& m_applications;
  LoginHelper m_helper;
  std::optional<Launch> m_launch;
};

}  // namespace quillo
