#include "EventLoop.h"
#include "config/Keys.h"
#include "foundation/UserDefaults.h"
#include "qlcore/services/PositionProvider.h"
#include "qlcore/services/QLLocationManager.h"
#include "tests/support/TestHome.h"

#include <QDateTime>
#include <QFile>
#include <QPointer>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class FakeSource final : public QGeoPositionInfoSource {
 public:
  FakeSource() : QGeoPositionInfoSource(nullptr) {}

  void find(double latitude, double longitude, double accuracy) {
    QGeoPositionInfo info(QGeoCoordinate(latitude, longitude), QDateTime::currentDateTimeUtc());
    if (!std::isnan(accuracy)) info.setAttribute(QGeoPositionInfo::HorizontalAccuracy, accuracy);
    Q_EMIT positionUpdated(info);
  }
  void failWith(Error error) { Q_EMIT errorOccurred(error); }

  void startUpdates() override {
    isStarted = true;
    if (errorAtStart != NoError) failWith(errorAtStart);
  }
  void stopUpdates() override { isStarted = false; }
  void requestUpdate(int) override {}
  [[nodiscard]] QGeoPositionInfo lastKnownPosition(bool) const override { return {}; }
  [[nodiscard]] PositioningMethods supportedPositioningMethods() const override { return AllPositioningMethods; }
  [[nodiscard]] int minimumUpdateInterval() const override { return 0; }
  [[nodiscard]] Error error() const override { return NoError; }

  bool isStarted{false};
  Error errorAtStart{NoError};
};

struct FakeProvider final : PositionProvider {
  [[nodiscard]] bool isEnabled() const override { return true; }
  [[nodiscard]] std::unique_ptr<QGeoPositionInfoSource> makeSource() const override {
    if (hasNone) return nullptr;
    auto made = std::make_unique<FakeSource>();
    made->errorAtStart = errorAtStart;
    source = made.get();
    return made;
  }

  bool hasNone{false};
  QGeoPositionInfoSource::Error errorAtStart{QGeoPositionInfoSource::NoError};
  mutable QPointer<FakeSource> source;
};

struct Call {
  std::shared_ptr<const QLLocation> location;
  bool isFinal;
  double accuracy;
};

class LocationManagerTest : public testing::Test {
 protected:
  LocationManagerTest() {
    auto made = std::make_unique<FakeProvider>();
    provider = made.get();
    manager = std::make_unique<QLLocationManager>(std::move(made));
  }

  void start(double seconds = 60) {
    manager->startWithTimeout(seconds, [this](const auto& location, bool isFinal) {
      calls.push_back({location, isFinal, manager->horzAccuracy()});
    });
  }
  void find(double latitude, double longitude, double accuracy) {
    provider->source->find(latitude, longitude, accuracy);
    handlePendingEvents();
  }

  FakeProvider* provider;
  std::unique_ptr<QLLocationManager> manager;
  std::vector<Call> calls;
};

TEST_F(LocationManagerTest, HandsOverEveryBetterFixAndEndsWithAGoodOne) {
  EXPECT_FALSE(manager->isSearching());
  EXPECT_EQ(manager->horzAccuracy(), infinite);
  start();
  EXPECT_TRUE(manager->isSearching());

  find(52.53, 13.42, 1200);
  find(52.6, 13.6, 3000);  // worse: the service lost its way again
  find(48.1, 11.5, notANumber);
  find(notANumber, 13, 10);
  find(52.525, 13.41, 800);
  find(52.525, 13.4101, 800);
  EXPECT_TRUE(manager->isSearching());
  find(52.5219, 13.4132, 100);

  ASSERT_EQ(calls.size(), 4U);
  const double accuracies[] = {1200, 800, 800, 100};
  for (size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(calls[i].accuracy, accuracies[i]);
    EXPECT_EQ(calls[i].isFinal, i == 3);
  }
  EXPECT_NE(calls[0].location, calls[1].location);
  EXPECT_EQ(*calls[3].location, (QLLocation{52.5219, 13.4132, u"Berlin, Germany"_s}));
  EXPECT_FALSE(manager->isSearching());
  EXPECT_EQ(manager->horzAccuracy(), 100);
  EXPECT_FALSE(provider->source);
}

TEST_F(LocationManagerTest, EndsAtTheTimeOutWithTheSameFixOrWithNone) {
  start(0.05);
  find(52.53, 13.42, 1200);
  ASSERT_TRUE(handleEventsUntil([&] { return !manager->isSearching(); }));
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].location, calls[1].location);
  EXPECT_TRUE(calls[1].isFinal);
  EXPECT_EQ(manager->horzAccuracy(), 1200);

  for (const double seconds : {0.01, 0.0, -5.0, notANumber}) {
    calls.clear();
    start(seconds);
    EXPECT_TRUE(calls.empty());
    ASSERT_TRUE(handleEventsUntil([&] { return !manager->isSearching(); }));
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
    EXPECT_TRUE(calls[0].isFinal);
    EXPECT_EQ(manager->horzAccuracy(), infinite);
  }
}

TEST_F(LocationManagerTest, AcceptsATimeOutBeyondAllTimers) {
  start(1e300);
  handlePendingEvents();
  EXPECT_TRUE(manager->isSearching());
  EXPECT_TRUE(calls.empty());
}

TEST_F(LocationManagerTest, TakesAFixOfUnknownAccuracyUntilThereIsABetterOne) {
  start();
  find(52.53, 13.42, notANumber);
  find(52.525, 13.41, 800);
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].accuracy, infinite);
  EXPECT_EQ(calls[1].accuracy, 800);
}

TEST_F(LocationManagerTest, SaysNothingAfterItWasStoppedStartedAgainOrDestroyed) {
  start();
  provider->source->find(52.53, 13.42, 50);  // on its way
  manager->stop();
  EXPECT_FALSE(manager->isSearching());
  EXPECT_FALSE(provider->source);
  handlePendingEvents();
  EXPECT_TRUE(calls.empty());

  start(0);
  provider->source->find(52.53, 13.42, 50);
  bool second = false;
  manager->startWithTimeout(60, [&](const auto&, bool) { second = true; });
  handlePendingEvents();
  EXPECT_TRUE(calls.empty());
  EXPECT_FALSE(second);

  start(0);
  provider->source->find(52.53, 13.42, 50);
  manager.reset();
  handlePendingEvents();
  EXPECT_TRUE(calls.empty());
}

TEST_F(LocationManagerTest, LetsTheHandlerDoAsItLikes) {
  int heard = 0;
  manager->startWithTimeout(60, [&](const auto&, bool) {
    ++heard;
    manager->stop();
  });
  provider->source->find(52.53, 13.42, 1200);
  provider->source->find(52.53, 13.42, 1100);
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
  provider->source->find(52.53, 13.42, 1200);
  provider->source->find(52.53, 13.42, 1200);
  handlePendingEvents();
  EXPECT_EQ(heard, 2);
}

TEST_F(LocationManagerTest, EndsWhenTheServiceCannotGoOn) {
  using Source = QGeoPositionInfoSource;
  for (const auto error : {Source::ClosedError, Source::UnknownSourceError, Source::AccessError}) {
    calls.clear();
    start();
    find(52.53, 13.42, 1200);
    provider->source->failWith(Source::UpdateTimeoutError);
    handlePendingEvents();
    EXPECT_TRUE(manager->isSearching());
    EXPECT_TRUE(manager->isAuthorized());
    provider->source->failWith(error);
    handlePendingEvents();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_TRUE(calls[1].isFinal);
    EXPECT_EQ(calls[1].location, calls[0].location);
    EXPECT_FALSE(manager->isSearching());
  }
  EXPECT_FALSE(manager->isAuthorized());  // the last one was a refusal
}

TEST_F(LocationManagerTest, IsNotCalledBackFromInsideTheStart) {
  for (const bool hasNone : {false, true}) {
    calls.clear();
    provider->hasNone = hasNone;
    provider->errorAtStart = QGeoPositionInfoSource::UnknownSourceError;
    start();
    EXPECT_TRUE(manager->isSearching());
    EXPECT_TRUE(calls.empty());
    ASSERT_TRUE(handleEventsUntil([&] { return !manager->isSearching(); }));
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_FALSE(calls[0].location);
    EXPECT_TRUE(calls[0].isFinal);
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
    std::vector<Call> calls;
    manager.startWithTimeout(5, [&](const auto& location, bool isFinal) {
      calls.push_back({location, isFinal, manager.horzAccuracy()});
    });
    ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); }));
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_NEAR(calls[0].accuracy, 1200, 0.5);
    EXPECT_NEAR(calls[1].accuracy, 800, 0.5);
    EXPECT_NEAR(calls[2].accuracy, 51, 0.5);
    EXPECT_TRUE(calls[2].isFinal);
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
    const NMEAPositionProvider provider(receiver);
    EXPECT_FALSE(provider.isEnabled()) << receiver.toStdString();
    QLLocationManager manager(std::make_unique<NMEAPositionProvider>(receiver));
    int finals = 0;
    manager.startWithTimeout(0.1, [&](const auto& location, bool isFinal) {
      EXPECT_FALSE(location);
      finals += isFinal;
    });
    ASSERT_TRUE(handleEventsUntil([&] { return !manager.isSearching(); })) << receiver.toStdString();
    EXPECT_EQ(finals, 1);
  }
}

}  // namespace
