#include "foundation/FileContents.h"
#include "platform/linux/LinuxSystemEvents.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/WallClockTimer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestHome.h"

#include <QDBusMessage>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/timex.h>
#include <unistd.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// With a folder that stands for that of the system's settings.
class LinuxSystemEventsTest : public testing::Test {
 protected:
  LinuxSystemEventsTest() { link("Europe/Berlin"); }

  void begin(const QDBusConnection& bus = noBus()) {
    events.emplace(bus, m_directory.path());
    events->setReceiver([this](SystemEvent event) { seen.push_back(event); });
  }
  [[nodiscard]] static QDBusConnection noBus() { return QDBusConnection(u"a bus that was never opened"_s); }

  // As the system's tools do it: a new link is renamed over the old one.
  void link(const QByteArray& zone) {
    const QByteArray name = QFile::encodeName(m_directory.filePath(u"localtime"_s));
    ASSERT_EQ(::symlink(("/usr/share/zoneinfo/" + zone).constData(), (name + ".new").constData()), 0);
    ASSERT_EQ(::rename((name + ".new").constData(), name.constData()), 0);
  }
  void write(const QString& name, const QByteArray& text) {
    ASSERT_TRUE(writeFileInPlace(m_directory.filePath(name), text));
  }

  QTemporaryDir m_directory;
  std::vector<SystemEvent> seen;
  std::optional<LinuxSystemEvents> events;
};

// Sets the clock by so many nanoseconds; false where this process may not.
bool moveClock(long nanoseconds) {
  timex change{};
  change.modes = ADJ_SETOFFSET | ADJ_NANO;
  change.time.tv_sec = nanoseconds < 0 ? -1 : 0;
  change.time.tv_usec = nanoseconds < 0 ? 1'000'000'000 + nanoseconds : nanoseconds;
  return ::clock_adjtime(CLOCK_REALTIME, &change) >= 0;
}

}  // namespace

TEST_F(LinuxSystemEventsTest, TellsWhenTheTimeZoneBecomesAnother) {
  write(u"timezone"_s, "Europe/Berlin\n");
  begin();
  // None of these changes the zone.
  write(u"passwd"_s, "nobody");
  link("Europe/Berlin");
  write(u"timezone"_s, "Europe/Berlin\n");
  QCoreApplication::processEvents();
  EXPECT_TRUE(seen.empty());

  // As Debian's tools do it, in two files: one change.
  link("Asia/Kolkata");
  EXPECT_TRUE(runUntil([this] { return !seen.empty(); }));
  write(u"timezone"_s, "Asia/Kolkata\n");
  handlePendingEvents();
  EXPECT_EQ(seen.size(), 1U);
  link("America/New_York");
  EXPECT_TRUE(runUntil([this] { return seen.size() > 1; }));
  // A copy of the zone, or a link that leads nowhere, does not tell the zone's name; then the other file counts.
  ASSERT_TRUE(QFile::remove(m_directory.filePath(u"localtime"_s)));
  write(u"localtime"_s, "TZif2");
  EXPECT_TRUE(runUntil([this] { return seen.size() > 2; }));
  handlePendingEvents();
  const size_t before = seen.size();
  write(u"timezone"_s, "America/Chicago\n");
  EXPECT_TRUE(runUntil([&] { return seen.size() > before; }));
  EXPECT_EQ(seen, std::vector<SystemEvent>(seen.size(), SystemEvent::TimeZoneDidChange));
}

TEST_F(LinuxSystemEventsTest, TellsWhenTheClockIsSet) {
  begin();
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  bool fired = false;
  const auto timer = timers.schedule(clock.secondsSince1970() + 3600, [&fired] { fired = true; });
  QCoreApplication::processEvents();
  EXPECT_TRUE(seen.empty());

  // There and back: the second time shows that it listens again.
  if (!moveClock(1)) GTEST_SKIP() << "this process may not set the clock";
  EXPECT_TRUE(runUntil([this] { return !seen.empty(); }));
  ASSERT_TRUE(moveClock(-1));
  EXPECT_TRUE(runUntil([this] { return seen.size() > 1; }));
  EXPECT_EQ(seen, std::vector<SystemEvent>(2, SystemEvent::ClockDidChange));
  EXPECT_FALSE(fired);
}

TEST_F(LinuxSystemEventsTest, SaysOnceWhatIsMissing) {
  LogCapture log;
  const LinuxSystemEvents nowhere(noBus(), u"/nonexistent/etc"_s);
  EXPECT_EQ(log.lines(), QStringList({u"Changes of the time zone go unnoticed: cannot watch /nonexistent/etc"_s,
                                      u"Waking is noticed by the clock alone: there is no system bus"_s}));
}

TEST_F(LinuxSystemEventsTest, TellsOfEachWakingOnce) {
  const PrivateBus bus("DBUS_SYSTEM_BUS_ADDRESS");
  if (bus.address().isEmpty()) GTEST_SKIP() << "no dbus-daemon";
  {
    QDBusConnection loginService = QDBusConnection::connectToBus(bus.address(), u"login service"_s);
    ASSERT_TRUE(loginService.registerService(u"org.freedesktop.login1"_s));
    begin(QDBusConnection::connectToBus(bus.address(), u"agent"_s));
    const auto prepareForSleep = [&loginService](bool goingToSleep) {
      QDBusMessage signal = QDBusMessage::createSignal(u"/org/freedesktop/login1"_s,
                                                       u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
      signal << goingToSleep;
      loginService.send(signal);
    };
    for (const size_t wakings : {1, 2}) {
      prepareForSleep(true);
      prepareForSleep(false);
      EXPECT_TRUE(runUntil([&] { return seen.size() >= wakings; }));
      EXPECT_EQ(seen, std::vector<SystemEvent>(wakings, SystemEvent::DidWake));
    }
  }
  events.reset();
  QDBusConnection::disconnectFromBus(u"login service"_s);
  QDBusConnection::disconnectFromBus(u"agent"_s);
}

}  // namespace quillo
