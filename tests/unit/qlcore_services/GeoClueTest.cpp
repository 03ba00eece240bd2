#include "EventLoop.h"
#include "qlcore/services/PositionProvider.h"
#include "qlcore/services/QLLocationManager.h"

#include <QElapsedTimer>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// A system bus of one's own. The program keeps its connection to the system bus, so there is one for all tests.
class GeoClueTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    daemon = std::make_unique<QProcess>();
    daemon->start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    if (!daemon->waitForReadyRead()) return;
    address = QString::fromUtf8(daemon->readLine()).trimmed();
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
  }
  static void TearDownTestSuite() {
    daemon->kill();
    daemon->waitForFinished();
    daemon.reset();
  }

  void SetUp() override {
    if (address.isEmpty()) GTEST_SKIP() << "no dbus-daemon";
  }
  void TearDown() override { end(); }

  void begin(const QString& mode) {
    end();
    service.start(QStringLiteral(QUILLO_GEOCLUE_DOUBLE), {address, mode});
    ASSERT_TRUE(service.waitForReadyRead());
    ASSERT_EQ(service.readLine(), "ready\n");
  }
  void end() {
    service.kill();
    service.waitForFinished();
  }
  // What the service was asked so far.
  bool wasAsked(const QByteArray& line) {
    return handleEventsUntil([&] {
      heard += service.readAll();
      return heard.contains(line + '\n');
    });
  }

  static inline std::unique_ptr<QProcess> daemon;
  static inline QString address;
  QProcess service;
  QByteArray heard;
};

TEST_F(GeoClueTest, IsEnabledWhenItRunsAndIsSwitchedOn) {
  const GeoCluePositionProvider provider;
  EXPECT_FALSE(provider.isEnabled());  // this bus cannot start it
  begin(u"finds"_s);
  EXPECT_TRUE(provider.isEnabled());
  begin(u"off"_s);
  EXPECT_FALSE(provider.isEnabled());
}

TEST_F(GeoClueTest, IsNotWaitedForWhenItDoesNotAnswer) {
  begin(u"mute"_s);
  QElapsedTimer watch;
  watch.start();
  EXPECT_TRUE(GeoCluePositionProvider().isEnabled());
  EXPECT_LT(watch.elapsed(), 1000);
}

TEST_F(GeoClueTest, GivesBetterAndBetterFixes) {
  begin(u"finds"_s);
  QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
  ASSERT_TRUE(manager.isAuthorized());
  for (int search = 0; search < 2; ++search) {
    heard.clear();
    std::vector<double> accuracies;
    std::shared_ptr<const QLLocation> last;
    manager.startWithTimeout(5, [&](const auto& location, bool) {
      accuracies.push_back(manager.horzAccuracy());
      last = location;
    });
    ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); }));
    EXPECT_EQ(accuracies, (std::vector<double>{1200, 40}));
    ASSERT_TRUE(last);
    EXPECT_EQ(*last, (QLLocation{52.5219, 13.4132, u"Berlin, Germany"_s}));
    EXPECT_TRUE(wasAsked("DesktopId=quillo-agent"));
    EXPECT_TRUE(wasAsked("Stop"));
  }
}

TEST_F(GeoClueTest, IsToldToStopWhenTheSearchIsStopped) {
  begin(u"finds"_s);
  QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
  manager.startWithTimeout(5, [&](const auto&, bool) { manager.stop(); });
  EXPECT_TRUE(wasAsked("Start"));
  EXPECT_TRUE(wasAsked("Stop"));
}

TEST_F(GeoClueTest, ThatRefusesIsNotAskedAgain) {
  begin(u"refuses"_s);
  QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
  int finals = 0;
  manager.startWithTimeout(5, [&](const auto& location, bool isFinal) {
    EXPECT_FALSE(location);
    finals += isFinal;
  });
  ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); }));
  EXPECT_EQ(finals, 1);
  EXPECT_FALSE(manager.isAuthorized());
}

TEST_F(GeoClueTest, ThatDoesNotAnswerHoldsNothingUp) {
  for (const QString& mode : {u"mute"_s, u"stalls"_s}) {
    begin(mode);
    QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
    QElapsedTimer watch;
    watch.start();
    manager.startWithTimeout(0.2, [](const auto& location, bool) { EXPECT_FALSE(location); });
    ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); }));
    EXPECT_LT(watch.elapsed(), 2000);
  }
}

TEST_F(GeoClueTest, ThatIsNotThereEndsTheSearchAtOnce) {
  QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
  int finals = 0;
  manager.startWithTimeout(60, [&](const auto& location, bool isFinal) {
    EXPECT_FALSE(location);
    finals += isFinal;
  });
  ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); }));
  EXPECT_EQ(finals, 1);
  EXPECT_TRUE(manager.isAuthorized());
}

}  // namespace
