#include "platform/linux/SingleInstance.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace quillo {

using namespace Qt::StringLiterals;

// A process that is ending still has the name, but not the object that answers; whoever starts then takes its place.
TEST(SingleInstance, FollowsOneThatEndsWithoutAnAnswer) {
  const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
  if (bus.address().isEmpty()) GTEST_SKIP() << "no dbus-daemon";
  const QString name = u"com.quilloapp.ending"_s;
  ASSERT_TRUE(QDBusConnection::connectToBus(bus.address(), u"ending"_s).registerService(name));
  std::jthread ending([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    QDBusConnection::disconnectFromBus(u"ending"_s);
  });
  SingleInstance instance(name);
  EXPECT_EQ(instance.join({}), SingleInstance::Role::First);
}

}  // namespace quillo
