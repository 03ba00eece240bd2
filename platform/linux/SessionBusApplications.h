#pragma once

#include "platform/RunningApplications.h"
#include "platform/linux/SessionBus.h"

#include <QDBusContext>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

// The bus name that stands for a process, "com.quilloapp.quillo.p1234"; nothing where the bundle identifier or the
// process identifier cannot be part of one.
[[nodiscard]] std::optional<QString> busNameOfApplication(const RunningApplication& application);
// The opposite; nothing when the name is not one of this bundle's.
[[nodiscard]] std::optional<RunningApplication> applicationOfBusName(const QString& name,
                                                                     const QString& bundleIdentifier);

// Every process owns a name on the session bus, and answers a Terminate call there; one that can be toggled answers a
// Toggle call, too, and one that reminds a Remind call. All only of the user's own programs. Needs a QCoreApplication.
class SessionBusApplications final : public QObject, public RunningApplications, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.quilloapp.Application")

 public:
  SessionBusApplications();
  // Waits for answers that are still to come, for a second at most: who asks and is gone cannot be told from a
  // stranger.
  ~SessionBusApplications() override;

  bool registerSelf(const QString& bundleIdentifier, std::function<void()> onTerminate) override;
  [[nodiscard]] QList<RunningApplication> running(const QString& bundleIdentifier) const override;
  bool terminate(const RunningApplication& application) override;
  [[nodiscard]] qint64 currentProcessIdentifier() const override;

  // What a Toggle call of another process does, from the event loop, after the caller has its answer.
  void setOnToggle(std::function<void()> onToggle) { m_onToggle = std::move(onToggle); }
  // Asks a process to toggle, and waits for its answer. False, with the reason, when it did not take the request.
  bool toggle(const RunningApplication& application, QString* reason) { return ask(u"Toggle", application, reason); }
  // The same of a reminder, to be given now as the settings want it.
  void setOnRemind(std::function<void()> onRemind) { m_onRemind = std::move(onRemind); }
  bool remind(const RunningApplication& application, QString* reason) { return ask(u"Remind", application, reason); }

  [[nodiscard]] bool isOnBus() { return m_bus.connect(); }
  // Calls back whenever a process of this bundle joins or leaves, for as long as the answer lives. Null without a bus.
  [[nodiscard]] std::unique_ptr<QObject> watch(const QString& bundleIdentifier, std::function<void()> onChange);
  // Waits until a process answers from its event loop: it is there for good, not only registered.
  [[nodiscard]] bool answers(const RunningApplication& application, const QDeadlineTimer& deadline);

  // Called over the bus.
  Q_SCRIPTABLE Q_INVOKABLE void Terminate();
  Q_SCRIPTABLE Q_INVOKABLE void Toggle();
  Q_SCRIPTABLE Q_INVOKABLE void Remind();

 private:
  bool claim(QDBusConnection& connection);
  [[nodiscard]] bool calledByOwnUser();
  // Whether that is a copy of this program whose connection to the bus is younger than ours.
  [[nodiscard]] bool isNewerCopy(const RunningApplication& application, const QString& owner) const;
  void endSoon();
  bool ask(QStringView method, const RunningApplication& application, QString* reason);
  // From the event loop, once the caller has its answer.
  void doSoon(const std::function<void()>& what, const QString& refusal);

  std::function<void()> m_onTerminate;
  std::function<void()> m_onToggle;
  std::function<void()> m_onRemind;
  QString m_ownName;
  bool m_terminating{false};
  QList<QDBusPendingCall> m_requests;  // to others, to end
  mutable SessionBus m_bus;
};

}  // namespace quillo
