#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QFile>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>

namespace quillo {

// A session bus of the test's own, for as long as it lives.
class PrivateBus {
 public:
  PrivateBus() {
    const QString socket = m_directory.filePath(QStringLiteral("bus"));
    QFile configuration(m_directory.filePath(QStringLiteral("bus.conf")));
    if (!configuration.open(QIODevice::WriteOnly)) return;
    configuration.write("<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(socket) +
                        "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow "
                        "send_destination=\"*\"/><allow receive_sender=\"*\"/>"
                        "<allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + configuration.fileName(), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
    // It says its address when it listens.
    m_runs = m_daemon.waitForStarted() && m_daemon.waitForReadyRead();
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(socket));
  }
  ~PrivateBus() {
    m_daemon.kill();
    m_daemon.waitForFinished();
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_before);
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  [[nodiscard]] bool runs() const { return m_runs; }

 private:
  QTemporaryDir m_directory;
  QByteArray m_before = qgetenv("DBUS_SESSION_BUS_ADDRESS");
  QProcess m_daemon;
  bool m_runs{false};
};

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
