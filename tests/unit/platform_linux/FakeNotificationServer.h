#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace quillo {

// A notification server that keeps what it was told.
class FakeNotificationServer : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  struct Shown {
    uint number;
    QString summary, body;
    QStringList actions;
    QVariantMap hints;
  };

  // A server whose numbers begin anew, as those of one that was started again.
  FakeNotificationServer() : m_connectionName(QStringLiteral("server-%1").arg(++s_count)) {
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName);
    bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                       QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals);
    bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
  }
  ~FakeNotificationServer() override { QDBusConnection::disconnectFromBus(m_connectionName); }

  // The client's answers are held back until release().
  void hold() { m_holds = true; }
  void release() {
    m_holds = false;
    auto bus = QDBusConnection(m_connectionName);
    for (const auto& [call, answer] : m_held) bus.send(call.createReply(answer));
    m_held.clear();
  }

  QStringList capabilities{QStringLiteral("body"), QStringLiteral("actions"), QStringLiteral("body-markup")};
  QList<Shown> shown;
  QList<uint> closed;

 public Q_SLOTS:
  Q_SCRIPTABLE QStringList GetCapabilities() { return capabilities; }
  Q_SCRIPTABLE uint Notify(const QString&, uint, const QString&, const QString& summary, const QString& body,
                           const QStringList& actions, const QVariantMap& hints, int) {
    shown << Shown{++m_last, summary, body, actions, hints};
    if (m_holds) {
      setDelayedReply(true);
      m_held.append({message(), m_last});
    }
    return m_last;
  }
  Q_SCRIPTABLE void CloseNotification(uint number) {
    closed << number;
    shown.removeIf([number](const Shown& s) { return s.number == number; });
    Q_EMIT NotificationClosed(number, 3);
  }

 Q_SIGNALS:
  Q_SCRIPTABLE void ActionInvoked(uint number, const QString& action);
  Q_SCRIPTABLE void NotificationClosed(uint number, uint reason);

 private:
  static inline int s_count = 0;
  QString m_connectionName;
  uint m_last{0};
  bool m_holds{false};
  QList<std::pair<QDBusMessage, uint>> m_held;
};

}  // namespace quillo
