#pragma once

#include "foundation/FileDescriptor.h"
#include "platform/SystemEvents.h"
#include "platform/linux/TimerDescriptor.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace quillo {

// The clock from the kernel's notice to timers, the time zone from the files in /etc that hold it, and sleep from the
// clock's notice and from the login service on the system bus. Each source is optional: one that is missing is named in
// the log, once.
class LinuxSystemEvents final : public QObject, public SystemEvents {
  Q_OBJECT

 public:
  // `zoneDirectory` holds the files "localtime" and "timezone".
  explicit LinuxSystemEvents(const QDBusConnection& systemBus = QDBusConnection::systemBus(),
                             const QString& zoneDirectory = QStringLiteral("/etc"));
  ~LinuxSystemEvents() override;

  void setReceiver(std::function<void(SystemEvent)> receiver) override;

 private Q_SLOTS:
  void prepareForSleep(bool goingToSleep);

 private:
  void clockWasSet();
  void watchTimeZone();
  void zoneDirectoryChanged();
  [[nodiscard]] QByteArray zoneState() const;
  void send(SystemEvent event);

  std::function<void(SystemEvent)> m_receiver;
  TimerDescriptor m_clockTimer;
  double m_secondsAsleep;
  bool m_saidAwake{false};

  QString m_zoneDirectory;
  QByteArray m_zoneState;
  FileDescriptor m_zoneDescriptor;
  std::unique_ptr<QSocketNotifier> m_zoneNotifier;
};

}  // namespace quillo
