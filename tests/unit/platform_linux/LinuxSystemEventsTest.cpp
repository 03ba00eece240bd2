#include "EventLoop.h"
#include "platform/linux/LinuxSystemEvents.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/WallClockTimer.h"
#include "tests/support/TestHome.h"

#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/timex.h>
#include <unistd.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Stands for the folder of the system's settings.
class ZoneFolder {
 public:
  ZoneFolder() { link("Europe/Berlin"); }

  [[nodiscard]] QString path() const { return m_directory.path(); }

  // As the system's tools do it: a new link is renamed over the old one.
  void link(const QByteArray& zone) {
    const QByteArray name = QFile::encodeName(m_directory.filePath(u"localtime"_s));
    ASSERT_EQ(::symlink(("/usr/share/zoneinfo/" + zone).constData(), (name + ".new").constData()), 0);
    ASSERT_EQ(::rename((name + ".new").constData(), name.constData()), 0);
  }
  void write(const QString& name, const QByteArray& text) {
    QFile file(m_directory.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
  }

 private:
  QTemporaryDir m_directory;
};

struct Recorder {
  explicit Recorder(LinuxSystemEvents& events) {
    events.setReceiver([this](SystemEvent event) { list.push_back(event); });
  }
  std::vector<SystemEvent> list;
};

// Sets the clock by so many nanoseconds; false where this process may not.
bool moveClock(long nanoseconds) {
  timex change{};
  change.modes = ADJ_SETOFFSET | ADJ_NANO;
  change.time.tv_sec = nanoseconds < 0 ? -1 : 0;
  change.time.tv_usec = nanoseconds < 0 ? 1'000'000'000 + nanoseconds : nanoseconds;
  return ::clock_adjtime(CLOCK_REALTIME, &change) >= 0;
}

QDBusConnection noBus() {
  return QDBusConnection(u"a bus that was never opened"_s);
}

}  // namespace

TEST(LinuxSystemEvents, TellsWhenTheTimeZoneBecomesAnother) {
  ZoneFolder folder;
  folder.write(u"timezone"_s, "Europe/Berlin\n");
  LinuxSystemEvents events(noBus(), folder.path());
  Recorder seen(events);
  // None of these changes the zone.
  folder.write(u"passwd"_s, "nobody");
  folder.link("Europe/Berlin");
  folder.write(u"timezone"_s, "Europe/Berlin\n");
  QCoreApplication::processEvents();
  EXPECT_TRUE(seen.list.empty());

  folder.link("Asia/Kolkata");
  EXPECT_TRUE(runUntil([&seen] { return !seen.list.empty(); }));
  folder.write(u"timezone"_s, "Asia/Kolkata\n");
  EXPECT_TRUE(runUntil([&seen] { return seen.list.size() > 1; }));
  EXPECT_EQ(seen.list, std::vector<SystemEvent>(2, SystemEvent::TimeZoneDidChange));
}

TEST(LinuxSystemEvents, TellsWhenTheClockIsSet) {
  const ZoneFolder folder;
  LinuxSystemEvents events(noBus(), folder.path());
  Recorder seen(events);
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  bool fired = false;
  const auto timer = timers.schedule(clock.secondsSince1970() + 3600, [&fired] { fired = true; });
  QCoreApplication::processEvents();
  EXPECT_TRUE(seen.list.empty());

  // There and back: the second time shows that it listens again.
  if (!moveClock(1)) GTEST_SKIP() << "this process may not set the clock";
  EXPECT_TRUE(runUntil([&seen] { return !seen.list.empty(); }));
  ASSERT_TRUE(moveClock(-1));
  EXPECT_TRUE(runUntil([&seen] { return seen.list.size() > 1; }));
  EXPECT_EQ(seen.list, std::vector<SystemEvent>(2, SystemEvent::ClockDidChange));
  EXPECT_FALSE(fired);
}

TEST(LinuxSystemEvents, SaysOnceWhatIsMissing) {
  LogCapture log;
  const LinuxSystemEvents events(noBus(), u"/nonexistent/etc"_s);
  EXPECT_EQ(log.lines(), QStringList({u"Changes of the time zone go unnoticed: cannot watch /nonexistent/etc"_s,
                                      u"Waking is noticed by the clock alone: there is no system bus"_s}));
}

TEST(LinuxSystemEvents, TellsOfEachWakingOnce) {
  QProcess daemon;
  daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
  if (!daemon.waitForStarted()) GTEST_SKIP() << "no dbus-daemon";
  ASSERT_TRUE(daemon.waitForReadyRead());
  const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
  {
    QDBusConnection loginService = QDBusConnection::connectToBus(address, u"login service"_s);
    ASSERT_TRUE(loginService.registerService(u"org.freedesktop.login1"_s));
    const ZoneFolder folder;
    LinuxSystemEvents events(QDBusConnection::connectToBus(address, u"agent"_s), folder.path());
    Recorder seen(events);
    const auto prepareForSleep = [&loginService](bool goingToSleep) {
      QDBusMessage signal = QDBusMessage::createSignal(u"/org/freedesktop/login1"_s,
                                                       u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
      signal << goingToSleep;
      loginService.send(signal);
    };
    for (const size_t wakings : {1, 2}) {
      prepareForSleep(true);
      prepareForSleep(false);
      EXPECT_TRUE(runUntil([&] { return seen.list.size() >= wakings; }));
      EXPECT_EQ(seen.list, std::vector<SystemEvent>(wakings, SystemEvent::DidWake));
    }
  }
  QDBusConnection::disconnectFromBus(u"login service"_s);
  QDBusConnection::disconnectFromBus(u"agent"_s);
  daemon.terminate();
  EXPECT_TRUE(daemon.waitForFinished());
}

}  // namespace quillo
