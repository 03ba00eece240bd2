#include "PTHotKey/PTHotKeyCenter.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class PTHotKeyCenterTest : public testing::Test {
 protected:
  std::shared_ptr<PTHotKey> hotKey(const QString& identifier, qint64 keyCode, quint64 modifiers = 0x100) {
    auto key = std::make_shared<PTHotKey>(identifier, PTKeyCombo::keyComboWithKeyCode(keyCode, modifiers));
    key->setTarget(&target);
    key->setAction([this](PTHotKey& pressed) { invoked << pressed.identifier()->string(); });
    return key;
  }

  FakeHotKeys platform;
  PTHotKeyCenter center{&platform};
  QObject target;
  QStringList invoked;
};

TEST_F(PTHotKeyCenterTest, NumbersAreNeverUsedAgain) {
  const auto one = hotKey(u"one"_s, 38);
  const auto two = hotKey(u"two"_s, 40);
  EXPECT_TRUE(center.registerHotKey(one));
  EXPECT_TRUE(center.registerHotKey(two));
  EXPECT_EQ(one->carbonHotKeyID(), 1U);
  EXPECT_EQ(two->carbonHotKeyID(), 2U);
  const FakeHotKeys::Claim expected{38, 0x100, {0x5054486B, 1}};
  EXPECT_EQ(platform.claims.at(one->carbonEventHotKeyRef()), expected);

  center.unregisterHotKey(one);
  EXPECT_EQ(one->carbonHotKeyID(), 0U);
  EXPECT_EQ(one->carbonEventHotKeyRef(), 0U);
  EXPECT_EQ(center.allHotKeys(), QList{two});
  EXPECT_TRUE(center.registerHotKey(one));
  EXPECT_EQ(one->carbonHotKeyID(), 3U);
  // Once more: it goes first, and comes back under another number.
  EXPECT_TRUE(center.registerHotKey(one));
  EXPECT_EQ(one->carbonHotKeyID(), 4U);
  EXPECT_EQ(platform.claims.size(), 2U);

  // A refusal uses a number up, and leaves the hot key as it was.
  platform.refusal = HotKeyStatus::alreadyClaimed;
  const auto refused = hotKey(u"refused"_s, 41);
  EXPECT_FALSE(center.registerHotKey(refused));
  EXPECT_EQ(center.lastStatus(), HotKeyStatus::alreadyClaimed);
  EXPECT_EQ(refused->carbonHotKeyID(), 0U);
  EXPECT_EQ(center.allHotKeys().size(), 2);
  platform.refusal = HotKeyStatus::done;
  EXPECT_TRUE(center.registerHotKey(refused));
  EXPECT_EQ(refused->carbonHotKeyID(), 6U);

  // The platform's status at the end does not matter, and its handler stays.
  platform.unregisterStatus = -1;
  for (const auto& key : center.allHotKeys()) center.unregisterHotKey(key);
  EXPECT_TRUE(center.allHotKeys().isEmpty());
  center.registerHotKey(one);
  EXPECT_EQ(platform.handlersInstalled, 1);

  PTHotKeyCenter withoutPlatform;
  EXPECT_FALSE(withoutPlatform.registerHotKey(hotKey(u"key"_s, 38)));
  EXPECT_EQ(withoutPlatform.lastStatus(), HotKeyStatus::unsupported);
}

TEST_F(PTHotKeyCenterTest, WhatCannotBeAHotKeyIsASuccessThatRegistersNothing) {
  for (const auto& key : {std::make_shared<PTHotKey>(), hotKey(u"bare"_s, 38, 0), hotKey(u"negative"_s, -2)}) {
    EXPECT_TRUE(center.registerHotKey(key));
    EXPECT_TRUE(center.allHotKeys().isEmpty());
    center.unregisterHotKey(key);
  }
  EXPECT_TRUE(platform.claims.empty());
  EXPECT_EQ(platform.handlersInstalled, 0);
  // One that was registered is not any more.
  const auto key = hotKey(u"emptied"_s, 38);
  center.registerHotKey(key);
  EXPECT_EQ(key->carbonHotKeyID(), 1U);
  key->setKeyCombo(nullptr);
  EXPECT_TRUE(key->keyCombo()->isClearCombo());
  EXPECT_EQ(platform.claims.size(), 1U);
  EXPECT_TRUE(center.registerHotKey(key));
  EXPECT_TRUE(platform.claims.empty());
  EXPECT_EQ(key->description(), u"<PTHotKey: emptied, (None)>"_s);
  EXPECT_EQ(PTHotKey().description(), u"<PTHotKey: (null), (None)>"_s);
}

TEST_F(PTHotKeyCenterTest, APressCallsTheRightOneOnceAndNoDeadTarget) {
  auto one = hotKey(u"one"_s, 38);
  auto mortal = std::make_unique<QObject>();
  one->setTarget(mortal.get());
  center.registerHotKey(one);
  center.registerHotKey(hotKey(u"two"_s, 40));
  platform.press(40, 0x100);
  platform.press(40, 0x100, HotKeyEvent::released);
  platform.press(38, 0x100);
  EXPECT_EQ(invoked, (QStringList{u"two"_s, u"one"_s}));
  EXPECT_EQ(center.sendCarbonEvent({.directObject = HotKeyID{PTHotKeyCenter::signature, 99}}), 0);
  mortal.reset();
  platform.press(38, 0x100);
  EXPECT_EQ(invoked.size(), 2);

  // An action may drop its hot key.
  one->setTarget(&target);
  one->setAction([&](PTHotKey& pressed) {
    center.unregisterHotKey(one);
    one.reset();
    invoked << pressed.identifier()->string() + u" dropped"_s;
  });
  platform.press(38, 0x100);
  EXPECT_EQ(invoked.last(), u"one dropped"_s);
}

TEST_F(PTHotKeyCenterTest, EventsOfNoHotKeyAreReportedAndDropped) {
  const HotKeyID own{PTHotKeyCenter::signature, 1};
  const struct {
    HotKeyEvent event;
    QString message;
    OSStatus status;
  } cases[] = {
      {{.eventClass = 0x6D6F7573, .directObject = own}, u"Unknown event class"_s, 0},
      {{.directObject = HotKeyID{0x4F746872, 1}}, u"Invalid hot key id"_s, 0},
      {{.directObject = HotKeyID{PTHotKeyCenter::signature, 0}}, u"Invalid hot key id"_s, 0},
      {{.kind = 7, .directObject = own}, u"Unknown event kind"_s, 0},
      {{.directObject = OSStatus{-9870}}, {}, -9870},
  };
  center.registerHotKey(hotKey(u"key"_s, 38));
  for (const auto& c : cases) {
    LogCapture log;
    EXPECT_EQ(center.sendCarbonEvent(c.event), c.status);
    ASSERT_EQ(log.lines().size(), c.message.isEmpty() ? 0 : 1);
    if (c.message.isEmpty()) continue;
    EXPECT_TRUE(log.lines()[0].endsWith(c.message)) << log.lines()[0].toStdString();
    EXPECT_TRUE(log.lines()[0].contains(u"PTHotKeyCenter.cpp:"_s));
  }
  EXPECT_TRUE(invoked.isEmpty());
}

TEST_F(PTHotKeyCenterTest, FindsByClaimAndIdentifier) {
  const auto key = hotKey(u"key"_s, 38);
  center.registerHotKey(key);
  const auto ref = static_cast<qint64>(key->carbonEventHotKeyRef());
  for (const FrameworkEvent& ignored :
       {FrameworkEvent{13, 6, ref}, FrameworkEvent{14, 7, ref}, FrameworkEvent{14, 9, ref}, FrameworkEvent{14, 6, 0},
        FrameworkEvent{14, 6, ref + 1}})
    center.sendEvent(ignored);
  EXPECT_TRUE(invoked.isEmpty());
  center.sendEvent({14, 6, ref});
  EXPECT_EQ(invoked, QStringList{u"key"_s});

  EXPECT_EQ(center.hotKeyWithIdentifier(PropertyListValue(u"key"_s)), key);
  EXPECT_EQ(center.hotKeyWithIdentifier(PropertyListValue(u"other"_s)), nullptr);
  EXPECT_EQ(center.hotKeyWithIdentifier(std::nullopt), nullptr);

  // Answers that come late.
  QStringList heard;
  center.setStateObserver([&](PTHotKey&, HotKeyState, const QString& reason) { heard << reason; });
  platform.stateObserver(key->carbonEventHotKeyRef(), HotKeyState::Refused, u"declined"_s);
  platform.stateObserver(key->carbonEventHotKeyRef() + 1, HotKeyState::Refused, u"of another"_s);
  EXPECT_EQ(heard, QStringList{u"declined"_s});
}

}  // namespace
}  // namespace quillo
