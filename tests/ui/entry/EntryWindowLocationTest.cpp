// Place and weather: the search, the line below the text, and the room it takes.

#include "controls/NinePartScaledImageView.h"
#include "controls/ProgressIndicator.h"
#include "tests/ui/entry/EntryWindowFixture.h"

#include <QAbstractButton>

namespace quillo {
namespace {

class EntryWindowLocationTest : public EntryWindowTest {
 protected:
  ~EntryWindowLocationTest() override { FakeLocationService::enabled = FakeLocationService::authorized = true; }
  QString line() { return controller->window().entryMetadataText(); }
  bool toggleIsOn() { return named<QAbstractButton>("locationToggleButton")->isChecked(); }
  bool bandIsShown() { return named<QWidget>("metadataBackgroundBox")->isVisible(); }
  bool pinIsShown() { return named<QWidget>("locationIndicatorView")->isVisible(); }
  bool spins() { return named<ProgressIndicator>("locationSpinner")->isTurning(); }
};

TEST_F(EntryWindowLocationTest, WhatIsFoundShowsBelowTheTextAndGoesIntoTheEntry) {
  show();
  ASSERT_TRUE(location && location->isSearching());
  EXPECT_TRUE(spins() && pinIsShown() && bandIsShown());
  EXPECT_EQ(line(), QString());
  location->find(berlin(), 20, false);
  EXPECT_FALSE(spins());
  EXPECT_EQ(line(), u"Berlin, Germany"_s);
  weather.succeed(mildWeather());
  EXPECT_EQ(line(), u"Berlin, Germany  \u2022  18 °C Partly cloudy"_s);
  EXPECT_TRUE(named<QWidget>("locationField")->accessibleName().endsWith(line()));
  type("x");
  controller->close();
  EXPECT_EQ(entries().value(0)->location(), *berlin());

  // The next opening seeks anew; what was found stays until then.
  show();
  EXPECT_EQ(location->searches, 2);
  EXPECT_FALSE(line().isEmpty());
  location->find(nullptr, 0, true);
  EXPECT_EQ(line(), u"18 °C Partly cloudy"_s);
}

TEST_F(EntryWindowLocationTest, ItSeeksOnlyWhenTheDesktopAndTheUserAllow) {
  const struct {
    bool enabled, authorized;
    std::optional<PropertyListValue> automatic;
    bool seeks, toggle;
  } cases[] = {{true, true, std::nullopt, true, true}, {true, true, true, true, true},
               {true, true, false, false, false},      {true, true, 0, false, false},
               {false, true, true, false, true},       {true, false, true, false, true}};
  for (const auto& c : cases) {
    FakeLocationService::enabled = c.enabled;
    FakeLocationService::authorized = c.authorized;
    // By another process, which does not tell.
    PersistentPropertyList::withPropertyListURL(config.groupProperties()->propertyListURL())
        ->setValueForKey(c.automatic, Key::addLocationAutomatically);
    location = nullptr;
    newController();
    show();
    EXPECT_EQ(location && location->searches == 1, c.seeks);
    EXPECT_EQ(toggleIsOn(), c.toggle);
    EXPECT_EQ(bandIsShown(), c.toggle);
    EXPECT_EQ(spins(), c.seeks);
    controller->close();
    EXPECT_FALSE(location && location->isSearching());
    EXPECT_FALSE(controller->window().showsLocationSpinner());
  }
  // Without a journal nothing is sought.
  FakeLocationService::enabled = FakeLocationService::authorized = true;
  config.groupProperties()->removeObjectForKey(Key::addLocationAutomatically);
  ASSERT_TRUE(QDir(journalURL.toLocalFile()).removeRecursively());
  location = nullptr;
  newController();
  controller->showWindowInMode(EntryWindowModeStandard);
  EXPECT_FALSE(location);
}

TEST_F(EntryWindowLocationTest, TheFirstSearchMayWaitForTheFirstFrame) {
  constexpr std::chrono::milliseconds delay{60};
  const auto newSlowController = [&] {
    location = nullptr;
    AgentEntryWindowServices slow = services();
    slow.firstSearchDelay = delay;
    controller = std::make_shared<AgentEntryWindowController>(slow, alarm);
    controller->showWindowInMode(EntryWindowModeStandard);
    EXPECT_FALSE(location);
  };
  // Who closes the window or switches the place off meanwhile gets no search.
  for (const bool closes : {true, false}) {
    newSlowController();
    closes ? controller->close() : named<QAbstractButton>("locationToggleButton")->click();
    QTest::qWait(static_cast<int>(delay.count()) * 2);
    EXPECT_FALSE(location);
  }
  newSlowController();
  ASSERT_TRUE(QTest::qWaitFor([this] { return location && location->isSearching(); }));
  EXPECT_TRUE(spins());
  controller->close();
  controller->showWindowInMode(EntryWindowModeStandard);
  EXPECT_EQ(location->searches, 2);
}

TEST_F(EntryWindowLocationTest, TheSwitchActsOnThisEntryOnly) {
  show();
  location->find(berlin(), 10, false);
  weather.succeed(mildWeather());
  const auto before = config.groupProperties()->allProperties();
  click("locationToggleButton");
  EXPECT_FALSE(toggleIsOn() || bandIsShown() || location->isSearching());
  EXPECT_EQ(line(), QString());
  EXPECT_EQ(config.groupProperties()->allProperties(), before);
  click("locationToggleButton");
  EXPECT_TRUE(toggleIsOn() && bandIsShown() && spins());
  EXPECT_EQ(location->searches, 2);

  // The weather may come when it is no longer wanted.
  location->find(berlin(), 10, false);
  click("locationToggleButton");
  weather.succeed(mildWeather());
  EXPECT_EQ(line(), QString());

  // The window comes to the front again, as the desktop may have asked for leave; whoever walks through it with the
  // keyboard stays where they are.
  auto* button = named<QWidget>("locationToggleButton");
  button->setFocus(Qt::TabFocusReason);
  QTest::keyClick(button, Qt::Key_Space);
  EXPECT_TRUE(toggleIsOn());
  QTest::qWait(100);
  EXPECT_EQ(QApplication::focusWidget(), button);
}

TEST_F(EntryWindowLocationTest, OnceItIsSwitchedOffForAllTheNextEntryHasNoPlace) {
  const auto setForAll = [this](bool isOn) {
    config.groupProperties()->setBoolForKey(isOn, Key::addLocationAutomatically);
    controller->settingsDidChange();
  };
  show();
  location->find(berlin(), 20, true);
  setForAll(false);
  EXPECT_EQ(line(), u"Berlin, Germany"_s) << "the window's own switch is for the entry in it";
  type("one");
  click("saveButton");
  setForAll(false);
  show();
  EXPECT_EQ(line(), QString());
  type("two");
  click("saveButton");
  setForAll(true);
  show();
  location->find(berlin(), 20, true);
  weather.succeed(mildWeather());
  EXPECT_EQ(line(), u"Berlin, Germany  \u2022  18 °C Partly cloudy"_s);
}

TEST_F(EntryWindowLocationTest, TheBandTakesItsRoomAndHidingMirrorsTheLowerEdge) {
  AgentEntryWindow& window = controller->window();
  const auto text = [&window] { return window.textContentFrame(); };
  EXPECT_EQ(text(), QRectF(3, 3, 296, 137));
  window.setShowsMetadata(true);
  EXPECT_EQ(text(), QRectF(3, 23, 296, 117));
  window.setShowsMetadata(true);
  EXPECT_EQ(text(), QRectF(3, 23, 296, 117));
  window.setShowsMetadata(false);
  EXPECT_EQ(text(), QRectF(3, 43, 296, 97));
  window.setShowsMetadata(true);
  EXPECT_EQ(text(), QRectF(3, 23, 296, 117));
  // The smaller area of a reminder takes from the text's height.
  window.setScrollBorderFrame(QRectF(13, 66, 302, 104));
  controller->showWindowInMode(EntryWindowModeReminder);
  EXPECT_EQ(text(), QRectF(3, 23, 296, 75));
  EXPECT_EQ(textView()->geometry(), QRect(3, 6, 296, 75));
  EXPECT_EQ(named<QWidget>("metadataBackgroundBox")->geometry(), QRect(0, 84, 302, 20));
}

}  // namespace
}  // namespace quillo
