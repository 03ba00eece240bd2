// Notifications against a server of the test's own on a private bus.

#include "FakeNotificationServer.h"
#include "foundation/Log.h"
#include "platform/Sounds.h"
#include "platform/linux/SessionBusUserNotifications.h"
#include "platform/linux/sound/SoundEffects.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <optional>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

struct FakeSounds : Sounds {
  bool playSoundNamed(const QString& name) override {
    played << name;
    return true;
  }
  QStringList played;
};

struct Listener final : UserNotificationCenterDelegate {
  void didActivateNotification(const UserNotification& notification) override { activated << notification.identifier; }
  bool shouldPresentNotification(const UserNotification&) override { return presents; }
  void didFailToShowNotification(const UserNotification& notification) override { failed << notification.identifier; }
  QList<quint64> activated;
  QList<quint64> failed;
  bool presents{true};
};

class UserNotificationsTest : public testing::Test {
 protected:
  // One bus for all: the bus library asks the environment for its address once a process.
  static void SetUpTestSuite() { bus.emplace("DBUS_SESSION_BUS_ADDRESS"); }
  static void TearDownTestSuite() { bus.reset(); }
  void SetUp() override {
    if (bus->address().isEmpty()) GTEST_SKIP() << "there is no dbus-daemon";
    server.emplace();
    center.emplace(u"quillo-agent"_s, sounds);
    center->setDelegate(&listener);
  }
  quint64 deliver(const QString& text = u"text"_s, const QString& sound = {}) {
    return center->deliverNotification({0, u"Journal Reminder"_s, text, sound});
  }
  // Until the server shows so many.
  [[nodiscard]] bool shows(qsizetype count) {
    return runUntil([this, count] { return server->shown.size() == count; });
  }
  // Everything sent so far has arrived: a notification that is delivered now comes after it.
  void settle() {
    const qsizetype before = server->shown.size();
    const quint64 last = deliver(u"settle"_s);
    ASSERT_TRUE(shows(before + 1));
    center->removeDeliveredNotification(last);
    ASSERT_TRUE(shows(before));
  }

  static inline std::optional<PrivateBus> bus;
  LogCapture log;
  FakeSounds sounds;
  Listener listener;
  std::optional<FakeNotificationServer> server;
  std::optional<SessionBusUserNotifications> center;
};

TEST_F(UserNotificationsTest, SaysWhatTheServerUnderstands) {
  const struct {
    QStringList capabilities;
    QString body;
    QStringList actions;
  } rows[] = {
      {{u"body"_s, u"body-markup"_s, u"actions"_s}, u"“a &lt; b” — C&amp;D"_s, {u"default"_s, u"Write"_s}},
      {{u"body"_s, u"actions"_s}, u"“a < b” — C&D"_s, {u"default"_s, u"Write"_s}},
      // One with actions might become a dialog there.
      {{u"body"_s}, u"“a < b” — C&D"_s, {}},
      {{}, u"“a < b” — C&D"_s, {}},
  };
  for (const auto& row : rows) {
    server->capabilities = row.capabilities;
    server->shown.clear();
    deliver(u"“a < b” — C&D"_s);
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(server->shown[0].summary, u"Journal Reminder"_s);
    EXPECT_EQ(server->shown[0].body, row.body);
    EXPECT_EQ(server->shown[0].actions, row.actions);
    EXPECT_EQ(server->shown[0].hints.value(u"desktop-entry"_s), u"quillo-agent"_s);
  }
}

TEST_F(UserNotificationsTest, ARemovalOvertakesADeliveryThatIsUnderWay) {
  // Before the server has heard of it.
  deliver();
  center->removeAllDeliveredNotifications();
  settle();
  EXPECT_EQ(server->shown.size(), 0);

  // And while it has it, but has not answered.
  server->hold();
  deliver();
  ASSERT_TRUE(shows(1));
  center->removeAllDeliveredNotifications();
  server->release();
  ASSERT_TRUE(shows(0));
}

TEST_F(UserNotificationsTest, AClickCountsOnceForWhatStandsAndFromItsServerOnly) {
  const quint64 first = deliver();
  ASSERT_TRUE(shows(1));
  settle();
  Q_EMIT server->ActionInvoked(99, u"default"_s);
  Q_EMIT server->ActionInvoked(1, u"other"_s);
  Q_EMIT server->ActionInvoked(1, u"default"_s);
  ASSERT_TRUE(runUntil([this] { return !listener.activated.isEmpty(); }));
  EXPECT_EQ(listener.activated, QList<quint64>{first});

  // Anybody can send a signal that says so.
  auto stranger = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"stranger"_s);
  auto forged = QDBusMessage::createSignal(u"/org/freedesktop/Notifications"_s, u"org.freedesktop.Notifications"_s,
                                           u"ActionInvoked"_s);
  forged << 1U << u"default"_s;
  stranger.send(forged);
  settle();
  EXPECT_EQ(listener.activated.size(), 1);
  QDBusConnection::disconnectFromBus(u"stranger"_s);

  // One that ran out can be brought back by the server; one that was dismissed is gone.
  Q_EMIT server->NotificationClosed(1, 1);
  Q_EMIT server->ActionInvoked(1, u"default"_s);
  ASSERT_TRUE(runUntil([this] { return listener.activated.size() == 2; }));
  Q_EMIT server->NotificationClosed(1, 2);
  Q_EMIT server->ActionInvoked(1, u"default"_s);
  settle();
  EXPECT_EQ(listener.activated.size(), 2);
}

TEST_F(UserNotificationsTest, AServerThatIsStartedAgainIsAskedForNothingOfTheOneBefore) {
  deliver();
  ASSERT_TRUE(shows(1));
  settle();
  server.reset();
  // None at all: the notification is lost, with a line in the log.
  deliver();
  ASSERT_TRUE(runUntil([this] { return log.lines().size() == 1; }));
  EXPECT_TRUE(log.lines()[0].startsWith(u"A notification could not be shown"_s));

  server.emplace();
  server->Notify({}, 0, {}, u"foreign"_s, {}, {}, {}, -1);
  // Its number is that of our first one.
  center->removeAllDeliveredNotifications();
  deliver();
  deliver();
  ASSERT_TRUE(shows(3));
  settle();
  EXPECT_FALSE(server->closed.contains(1U));
  center->removeAllDeliveredNotifications();
  ASSERT_TRUE(shows(1));
  EXPECT_EQ(server->shown[0].summary, u"foreign"_s);
}

TEST_F(UserNotificationsTest, TheSoundIsHeardServerOrNotAndTheDelegateMayKeepOneOffTheScreen) {
  listener.presents = false;
  deliver();
  listener.presents = true;
  deliver(u"text"_s, u"bell"_s);
  EXPECT_EQ(sounds.played, QStringList{u"bell"_s});
  ASSERT_TRUE(shows(1));
  EXPECT_EQ(server->shown[0].hints.value(u"suppress-sound"_s), true);
  deliver();
  EXPECT_EQ(sounds.played.size(), 1);
  EXPECT_TRUE(listener.failed.isEmpty());
  server.reset();
  const quint64 lost = deliver(u"text"_s, u"bell"_s);
  EXPECT_EQ(sounds.played.size(), 2);
  EXPECT_TRUE(runUntil([&] { return listener.failed.contains(lost); }));
}

TEST(SoundEffects, ASoundThatIsNotThereIsSilentAndNotReported) {
  const TestHome home;
  LogCapture log;
  SoundEffects sounds({home.path(), {}});
  EXPECT_FALSE(sounds.playSoundNamed(u"quillo-reminder"_s));
  EXPECT_FALSE(sounds.playSoundNamed({}));
  EXPECT_TRUE(log.lines().isEmpty());
}

}  // namespace
}  // namespace quillo
