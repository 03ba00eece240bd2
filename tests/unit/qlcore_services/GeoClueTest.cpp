#include "LocationSearch.h"
#include "qlcore/services/PositionProvider.h"
#include "tests/support/PrivateBus.h"

#include <QElapsedTimer>
#include <QProcess>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// One bus for all tests, as the program keeps its connection to the system bus.
class GeoClueTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { bus.emplace("DBUS_SYSTEM_BUS_ADDRESS"); }
  static void TearDownTestSuite() { bus.reset(); }
  void SetUp() override {
    if (bus->address().isEmpty()) GTEST_SKIP() << "no dbus-daemon";
  }
  void TearDown() override { end(); }

  void begin(const QString& mode) {
    end();
    service.start(QStringLiteral(QUILLO_GEOCLUE_DOUBLE), {bus->address(), mode});
    ASSERT_TRUE(service.waitForReadyRead());
    ASSERT_EQ(service.readLine(), "ready\n");
  }
  void end() {
    service.kill();
    service.waitForFinished();
  }
  // What the service was asked so far.
  bool wasAsked(const QByteArray& line) {
    return runUntil([&] {
      heard += service.readAll();
      return heard.contains(line + '\n');
    });
  }

  static inline std::optional<PrivateBus> bus;
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

TEST_F(GeoClueTest, GivesBetterAndBetterFixes) {
  begin(u"finds"_s);
  QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
  ASSERT_TRUE(manager.isAuthorized());
  for (int search = 0; search < 2; ++search) {
    heard.clear();
    const auto calls = callsOfSearch(manager, 5);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].accuracy, 1200);
    EXPECT_EQ(calls[1].accuracy, 40);
    EXPECT_EQ(*calls[1].location, (QLLocation{52.5219, 13.4132, u"Berlin, Germany"_s}));
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

TEST_F(GeoClueTest, FindsNothingWhereItIsNotThereRefusesOrDoesNotAnswer) {
  for (const auto& [mode, seconds] :
       {std::pair<QString, double>{QString(), 60}, {u"refuses"_s, 60}, {u"mute"_s, 0.2}, {u"stalls"_s, 0.2}}) {
    SCOPED_TRACE(mode.toStdString());
    if (!mode.isEmpty()) begin(mode);
    QLLocationManager manager(std::make_unique<GeoCluePositionProvider>());
    QElapsedTimer watch;
    watch.start();
    EXPECT_EQ(manager.locationServicesEnabled(), !mode.isEmpty());
    EXPECT_LT(watch.restart(), 1000);
    const auto calls = callsOfSearch(manager, seconds);
    EXPECT_LT(watch.elapsed(), 2000);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
    EXPECT_EQ(manager.isAuthorized(), mode != u"refuses"_s);
  }
}

}  // namespace
