#pragma once

#include "platform/RunningApplications.h"
#include "platform/linux/SessionBus.h"

#include <QObject>

#include <optional>

namespace quillo {

// The bus name that stands for a process, "com.quilloapp.quillo.p1234"; nothing where the bundle identifier or the
// process identifier cannot be part of one.
[[nodiscard]] std::optional<QString> busNameOfApplication(const RunningApplication& application);
// The opposite; nothing when the name is not one of this bundle's.
[[nodiscard]] std::optional<RunningApplication> applicationOfBusName(const QString& name,
                                                                     const QString& bundleIdentifier);

// Every process owns a name on the session bus, and answers a Terminate call there. Needs a QCoreApplication.
class SessionBusApplications final : public QObject, public RunningApplications {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quilloapp.Application")

 public:
  SessionBusApplications();

  bool registerSelf(const QString& bundleIdentifier, std::function<void()> onTerminate) override;
  [[nodiscard]] QList<RunningApplication> running(const QString& bundleIdentifier) const override;
  bool terminate(const RunningApplication& application) override;
  [[nodiscard]] qint64 currentProcessIdentifier() const override;

  // Called over the bus.
  Q_SCRIPTABLE Q_INVOKABLE void Terminate();

 private:
  bool claim(QDBusConnection& connection);

  std::function<void()> m_onTerminate;
  QString m_ownName;
  bool m_terminating{false};
  mutable SessionBus m_bus;
};

}  // namespace quillo
