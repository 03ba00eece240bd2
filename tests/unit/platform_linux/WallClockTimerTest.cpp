#include "platform/linux/SystemClock.h"
#include "platform/linux/WallClockTimer.h"
#include "tests/support/EventLoop.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// For how many seconds more the kernel's timers of this process are armed, as it says itself, and with which clock.
struct KernelTimer {
  int clock;
  int flags;
  double remaining;
};

QList<KernelTimer> kernelTimers() {
  static const QRegularExpression pattern(
      u"clockid: (\\d+)\n.*settime flags: (\\d+)\n.*it_value: \\((\\d+), (\\d+)\\)"_s,
      QRegularExpression::DotMatchesEverythingOption);
  QList<KernelTimer> timers;
  for (const QString& name : QDir(u"/proc/self/fdinfo"_s).entryList(QDir::Files)) {
    QFile file(u"/proc/self/fdinfo/"_s + name);
    if (!file.open(QIODevice::ReadOnly)) continue;
    const auto match = pattern.match(QString::fromLatin1(file.readAll()));
    if (!match.hasMatch()) continue;
    timers.append({match.captured(1).toInt(), match.captured(2).toInt(nullptr, 8),
                   match.captured(3).toDouble() + match.captured(4).toDouble() / 1e9});
  }
  return timers;
}

class SettableClock final : public Clock {
 public:
  [[nodiscard]] double secondsSince1970() const override { return m_system.secondsSince1970() + ahead; }
  double ahead{0};

 private:
  SystemClock m_system;
};

constexpr double day = 86400;

}  // namespace

TEST(WallClockTimer, ArmsTheKernelForTheVeryDate) {
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  for (const double away : {60.0, 40 * day, 3653 * day, 100 * 366 * day}) {
    bool fired = false;
    const auto timer = timers.schedule(clock.secondsSince1970() + away, [&fired] { fired = true; });
    const auto armed = kernelTimers();
    ASSERT_EQ(armed.size(), 1) << away;
    EXPECT_EQ(armed[0].clock, 0) << "real time";
    EXPECT_EQ(armed[0].flags, 1) << "absolute";
    EXPECT_NEAR(armed[0].remaining, away, 1.0);
    QCoreApplication::processEvents();
    EXPECT_FALSE(fired) << away;
  }
  EXPECT_TRUE(kernelTimers().isEmpty()) << "destroying cancels";
  for (const double never : {253402300799.0, 1e300, std::numeric_limits<double>::infinity()}) {
    bool fired = false;
    const auto timer = timers.schedule(never, [&fired] { fired = true; });
    QCoreApplication::processEvents();
    EXPECT_FALSE(fired) << never;
  }
}

TEST(WallClockTimer, PastDatesFireAtTheNextTurnOfTheLoop) {
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  for (const double past : {clock.secondsSince1970(), clock.secondsSince1970() - 3600, 0.0, -1e9, -1e300,
                            std::numeric_limits<double>::quiet_NaN()}) {
    int fired = 0;
    const auto timer = timers.schedule(past, [&fired] { ++fired; });
    EXPECT_EQ(fired, 0) << past;
    EXPECT_TRUE(runUntil([&fired] { return fired > 0; })) << past;
    QCoreApplication::processEvents();
    EXPECT_EQ(fired, 1) << past;
  }
}

TEST(WallClockTimer, FiresAtItsTimeAndMayBeDestroyedByItsAction) {
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  const double due = clock.secondsSince1970() + 0.1;
  double firedAt = 0;
  std::unique_ptr<OneShotTimer> timer;
  timer = timers.schedule(due, [&] {
    timer.reset();
    firedAt = clock.secondsSince1970();
  });
  EXPECT_TRUE(runUntil([&firedAt] { return firedAt > 0; }));
  EXPECT_GE(firedAt, due);
  EXPECT_EQ(timer, nullptr);
}

TEST(WallClockTimer, OvertakenByTheClockItLetsTheNoticeComeFirst) {
  SettableClock clock;
  WallClockTimerFactory timers(clock, 0.1);
  int fired = 0;
  auto timer = timers.schedule(clock.secondsSince1970() + 0.05, [&fired] { ++fired; });
  clock.ahead = 3600;
  // Re-armed relative to now: the notice may come.
  EXPECT_TRUE(runUntil([] { return !kernelTimers().isEmpty() && kernelTimers().front().flags == 0; }));
  EXPECT_EQ(fired, 0);
  // None came; it acts after all.
  EXPECT_TRUE(runUntil([&fired] { return fired > 0; }));

  fired = 0;
  timer = timers.schedule(clock.secondsSince1970() - 3600 + 0.05, [&fired] { ++fired; });
  EXPECT_TRUE(runUntil([&fired] { return fired > 0; }));
  EXPECT_EQ(kernelTimers().front().flags, 1) << "was late when it was armed: no waiting";
}

}  // namespace quillo
