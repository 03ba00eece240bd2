#include "LocationSearch.h"
#include "config/Keys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/FakePositionSource.h"
#include "tests/support/TestHome.h"

#include <QDateTime>
#include <QFile>

#include <cmath>
#include <functional>
#include <limits>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class LocationManagerTest : public testing::Test {
 protected:
  LocationManagerTest() {
    auto made = std::make_unique<FakePositionProvider>();
    provider = made.get();
    manager = std::make_unique<QLLocationManager>(std::move(made));
  }

  void start(double seconds = 60) { startSearch(*manager, seconds, calls); }
  // On its way: nobody has heard of it yet.
  void send(double latitude, double longitude, double accuracy) {
    QGeoPositionInfo info(QGeoCoordinate(latitude, longitude), QDateTime::currentDateTimeUtc());
    if (!std::isnan(accuracy)) info.setAttribute(QGeoPositionInfo::HorizontalAccuracy, accuracy);
    Q_EMIT provider->source->positionUpdated(info);
  }
  void find(double latitude, double longitude, double accuracy) {
    send(latitude, longitude, accuracy);
    handlePendingEvents();
  }
  void failWith(QGeoPositionInfoSource::Error error) {
    Q_EMIT provider->source->errorOccurred(error);
    handlePendingEvents();
  }

  FakePositionProvider* provider;
  std::unique_ptr<QLLocationManager> manager;
  std::vector<Call> calls;
};

TEST_F(LocationManagerTest, HandsOverEveryBetterFixAndEndsWithAGoodOne) {
  EXPECT_FALSE(manager->isSearching());
  EXPECT_EQ(manager->horzAccuracy(), infinite);
  start();
  EXPECT_TRUE(manager->isSearching());

  find(52.53, 13.42, notANumber);
  find(52.53, 13.42, 1200);
  find(52.6, 13.6, 3000);  // worse: the service lost its way again
  find(48.1, 11.5, notANumber);
  find(notANumber, 13, 10);
  find(52.525, 13.41, 800);
  find(52.525, 13.4101, 800);
  EXPECT_TRUE(manager->isSearching());
  find(52.5219, 13.4132, 100);

  ASSERT_EQ(calls.size(), 5U);
  const double accuracies[] = {infinite, 1200, 800, 800, 100};
  for (size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(calls[i].accuracy, accuracies[i]);
    EXPECT_EQ(calls[i].isFinal, i == 4);
  }
  EXPECT_NE(calls[1].location, calls[2].location);
  EXPECT_EQ(*calls[4].location, (QLLocation{52.5219, 13.4132, u"Berlin, Germany"_s}));
  EXPECT_FALSE(manager->isSearching());
  EXPECT_EQ(manager->horzAccuracy(), 100);
  EXPECT_FALSE(provider->source);
}

TEST_F(LocationManagerTest, EndsAtTheTimeOutWithTheSameFixOrWithNone) {
  start(0.05);
  find(52.53, 13.42, 1200);
  ASSERT_TRUE(runUntil([&] { return !manager->isSearching(); }));
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].location, calls[1].location);
  EXPECT_TRUE(calls[1].isFinal);
  EXPECT_EQ(manager->horzAccuracy(), 1200);

  for (const double seconds : {0.01, 0.0, -5.0, notANumber}) {
    calls = callsOfSearch(*manager, seconds);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
    EXPECT_EQ(manager->horzAccuracy(), infinite);
  }
  // Beyond all timers.
  start(1e300);
  handlePendingEvents();
  EXPECT_TRUE(manager->isSearching());
  manager->stop();
  EXPECT_FALSE(manager->isSearching());
}

TEST_F(LocationManagerTest, SaysNothingAfterItWasStoppedStartedAgainOrDestroyed) {
  const std::function<void()> ends[] = {
      [&] { manager->stop(); },
      [&] { manager->startWithTimeout(60, [](const auto&, bool) { ADD_FAILURE() << "the next search hears it"; }); },
      [&] { manager.reset(); },
  };
  for (const auto& end : ends) {
    start(0);
    const auto source = provider->source;
    send(52.53, 13.42, 50);
    end();
    EXPECT_FALSE(source);
    handlePendingEvents();
    EXPECT_TRUE(calls.empty());
  }
}

TEST_F(LocationManagerTest, LetsTheHandlerDoAsItLikes) {
  int heard = 0;
  manager->startWithTimeout(60, [&](const auto&, bool) {
    ++heard;
    manager->stop();
  });
  send(52.53, 13.42, 1200);
  send(52.53, 13.42, 1100);
  handlePendingEvents();
  EXPECT_EQ(heard, 1);

  manager->startWithTimeout(60, [&](const auto&, bool) { start(); });
  find(52.53, 13.42, 10);
  find(52.53, 13.42, 20);
  EXPECT_EQ(calls.size(), 1U);

  manager->startWithTimeout(60, [&](const auto&, bool) {
    ++heard;
    manager.reset();
  });
  send(52.53, 13.42, 1200);
  send(52.53, 13.42, 1200);
  handlePendingEvents();
  EXPECT_EQ(heard, 2);
}

TEST_F(LocationManagerTest, EndsWhenTheServiceCannotGoOn) {
  using Source = QGeoPositionInfoSource;
  for (const auto error : {Source::ClosedError, Source::UnknownSourceError, Source::AccessError}) {
    calls.clear();
    start();
    find(52.53, 13.42, 1200);
    failWith(Source::UpdateTimeoutError);
    EXPECT_TRUE(manager->isSearching());
    EXPECT_TRUE(manager->isAuthorized());
    failWith(error);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_TRUE(calls[1].isFinal);
    EXPECT_EQ(calls[1].location, calls[0].location);
    EXPECT_FALSE(manager->isSearching());
  }
  EXPECT_FALSE(manager->isAuthorized());  // the last one was a refusal
}

TEST_F(LocationManagerTest, IsNotCalledBackFromInsideTheStart) {
  for (const bool hasNone : {false, true}) {
    provider->hasNone = hasNone;
    provider->errorAtStart = QGeoPositionInfoSource::UnknownSourceError;
    calls = callsOfSearch(*manager, 60);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
  }
}

TEST(NMEAReceiver, PlaysAFileFixByFix) {
  const TestHome home;
  UserDefaults defaults(home.path(), u"test"_s);
  defaults.setObjectForKey(PropertyListValue(QStringLiteral(QUILLO_TEST_DATA "/nmea/improving.nmea")),
                           Key::locationNMEASource);
  QLLocationManager manager(positionProvider(defaults));
  ASSERT_TRUE(manager.locationServicesEnabled());
  ASSERT_TRUE(manager.isAuthorized());
  // From the start for every search.
  for (int search = 0; search < 2; ++search) {
    const auto calls = callsOfSearch(manager, 5);
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_NEAR(calls[0].accuracy, 1200, 0.5);
    EXPECT_NEAR(calls[1].accuracy, 800, 0.5);
    EXPECT_NEAR(calls[2].accuracy, 51, 0.5);
    EXPECT_NEAR(calls[2].location->latitude, 52.5219, 1e-6);
    EXPECT_NEAR(calls[2].location->longitude, 13.4132, 1e-6);
  }
}

TEST(NMEAReceiver, ThatIsNotThereIsNotEnabledAndFindsNothing) {
  const TestHome home;
  QFile large(home.path(u"large"_s));
  ASSERT_TRUE(large.open(QIODevice::WriteOnly) && large.resize(1024LL * 1024 + 1));
  for (const QString& receiver :
       {home.path(u"none"_s), home.path(), home.path(u"large"_s), u"/dev/zero"_s, u"serial:/dev/none"_s}) {
    SCOPED_TRACE(receiver.toStdString());
    QLLocationManager manager(std::make_unique<NMEAPositionProvider>(receiver));
    EXPECT_FALSE(manager.locationServicesEnabled());
    const auto calls = callsOfSearch(manager, 0.1);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
  }
}

}  // namespace
