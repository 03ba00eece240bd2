#include "platform/linux/SystemdTimers.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

QString contents(const QString& path) {
  QFile file(path);
  return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

const ScheduledCommand command{u"quillo-backup"_s,
                               u"Back up"_s,
                               u"/opt/a $b/100%/\"quillo\"ctl"_s,
                               {u"backup"_s, u"it's"_s},
                               ScheduledCommand::Every::Week};

TEST(SystemdTimers, WritesUnitsForAHomeThatIsNotTheSessions) {
  const QTemporaryDir home;
  SystemdTimers timers(home.path(), /*isOfSession=*/false);
  QString reason;
  EXPECT_EQ(timers.enable(command, &reason), CommandSchedule::Outcome::Written);
  EXPECT_TRUE(reason.contains(u"not the session's"_s));
  EXPECT_TRUE(timers.isEnabled(u"quillo-backup"_s));
  EXPECT_EQ(timers.next(u"quillo-backup"_s), std::nullopt);
  const QString folder = home.filePath(u"systemd/user/"_s);
  EXPECT_EQ(contents(folder + u"quillo-backup.service"_s),
            u"[Unit]\nDescription=Back up\nConditionFileIsExecutable=/opt/a $b/100%%/\"quillo\"ctl\n\n"
            "[Service]\nType=oneshot\nExecStart=\"/opt/a $$b/100%%/\\\"quillo\\\"ctl\" \"backup\" \"it's\"\n"
            "Nice=10\nIOSchedulingClass=idle\n"_s);
  const QString timer = contents(folder + u"timers.target.wants/quillo-backup.timer"_s);
  EXPECT_TRUE(timer.contains(u"OnCalendar=Sun *-*-* 20:00:00\nPersistent=true\n"_s)) << timer.toStdString();
  EXPECT_EQ(timers.crontabLine(command), u"0 20 * * 0 '/opt/a $b/100\\%/\"quillo\"ctl' 'backup' 'it'\\''s'"_s);

  // Again, with another rhythm, and away.
  ScheduledCommand hourly = command;
  hourly.every = ScheduledCommand::Every::Hour;
  EXPECT_EQ(timers.enable(hourly, &reason), CommandSchedule::Outcome::Written);
  EXPECT_TRUE(contents(folder + u"quillo-backup.timer"_s).contains(u"OnCalendar=*-*-* *:00:00\n"_s));
  EXPECT_TRUE(timers.disable(u"quillo-backup"_s, &reason));
  EXPECT_TRUE(timers.disable(u"quillo-backup"_s, &reason)) << "what is away is away";
  EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList());
  EXPECT_FALSE(timers.isEnabled(u"quillo-backup"_s));
}

TEST(SystemdTimers, RefusesWhatNoUnitCanHold) {
  const QTemporaryDir home;
  SystemdTimers timers(home.path(), /*isOfSession=*/false);
  QString reason;
  ScheduledCommand broken = command;
  broken.program = u"/opt/x\nExecStart=/bin/evil"_s;
  EXPECT_EQ(timers.enable(broken, &reason), CommandSchedule::Outcome::Failed);
  EXPECT_FALSE(timers.isEnabled(u"quillo-backup"_s));
  // A file where the folder is to be.
  QFile file(home.filePath(u"systemd"_s));
  ASSERT_TRUE(file.open(QFile::WriteOnly));
  EXPECT_EQ(timers.enable(command, &reason), CommandSchedule::Outcome::Failed);
  EXPECT_FALSE(reason.isEmpty());
}

// A user's manager that notes what it is asked.
class FakeManager : public QDBusVirtualObject {
 public:
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    QStringList words{message.member()};
    for (const QVariant& argument : message.arguments()) words << argument.toString();
    asked << words.join(u' ');
    return connection.send(message.createReply());
  }
  QStringList asked;
};

TEST(SystemdTimers, TellsTheUsersManager) {
  const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
  if (bus.address().isEmpty()) GTEST_SKIP() << "no dbus-daemon";
  const QTemporaryDir home;
  QStringList asked;
  QThread service;
  QObject onThread;
  FakeManager manager;
  onThread.moveToThread(&service);
  service.start();
  const auto serve = [&](const std::function<void()>& work) {
    QMetaObject::invokeMethod(&onThread, work, Qt::BlockingQueuedConnection);
  };
  manager.moveToThread(&service);
  serve([&] {
    auto connection = QDBusConnection::connectToBus(bus.address(), u"fake-manager"_s);
    connection.registerVirtualObject(u"/org/freedesktop/systemd1"_s, &manager);
    connection.registerService(u"org.freedesktop.systemd1"_s);
  });
  SystemdTimers timers(home.path(), /*isOfSession=*/true);
  QString reason;
  EXPECT_EQ(timers.enable(command, &reason), CommandSchedule::Outcome::Active) << reason.toStdString();
  EXPECT_TRUE(timers.disable(u"quillo-backup"_s, &reason));
  serve([&] {
    asked = manager.asked;
    QDBusConnection::disconnectFromBus(u"fake-manager"_s);
  });
  EXPECT_THAT(asked, testing::ElementsAre(u"Reload"_s, u"RestartUnit quillo-backup.timer replace"_s,
                                          u"StopUnit quillo-backup.timer replace"_s, u"Reload"_s));
  // It is gone.
  EXPECT_EQ(timers.enable(command, &reason), CommandSchedule::Outcome::Written);
  EXPECT_TRUE(reason.contains(u"no systemd of the user's"_s));
  service.quit();
  service.wait();
}

}  // namespace
}  // namespace quillo
