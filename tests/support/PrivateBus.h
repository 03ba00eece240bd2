#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace quillo {

// A bus of the test's own that starts no services, named by an environment variable for as long as it lives. The bus
// library reads its variables once a process, so there can be one for each in a program.
class PrivateBus {
 public:
  explicit PrivateBus(const char* variable) : m_variable(variable), m_before(qgetenv(variable)) {
    QFile configuration(m_directory.filePath(QStringLiteral("bus.conf")));
    if (!configuration.open(QIODevice::WriteOnly)) return;
    configuration.write("<busconfig><type>session</type><listen>unix:dir=" + QFile::encodeName(m_directory.path()) +
                        "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
                        "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + configuration.fileName(), QStringLiteral("--nofork"),
                    QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    // It says its address when it listens.
    if (m_daemon.waitForReadyRead()) m_address = m_daemon.readLine().trimmed();
    qputenv(m_variable, m_address);
  }
  ~PrivateBus() {
    m_daemon.kill();
    m_daemon.waitForFinished();
    qputenv(m_variable, m_before);
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  // Empty where there is no dbus-daemon.
  [[nodiscard]] QString address() const { return QString::fromUtf8(m_address); }

 private:
  const char* m_variable;
  QByteArray m_before, m_address;
  QTemporaryDir m_directory;
  QProcess m_daemon;
};

}  // namespace quillo
