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
  static std::shared_ptr<const QLLocation> berlin() {
    return std::make_shared<const QLLocation>(QLLocation{52.52, 13.405, {}});
  }
  QString line() { return controller->window().entryMetadataText(); }
  bool toggleIsOn() { return named<QAbstractButton>("locationToggleButton")->isChecked(); }
  bool bandIsShown() { return named<QWidget>("metadataBackgroundBox")->isVisible(); }
  bool pinIsShown() { return named<QWidget>("locationIndicatorView")->isVisible(); }
  bool spins() { return named<ProgressIndicator>("locationSpinner")->isTurning(); }
  const QLWeather mild{18.2, u"partlycloudy_day"_s, {}, {}, {}};
};

TEST_F(EntryWindowLocationTest, ImprovingFixesShowThePlaceAndAskForTheWeatherOnce) {
  show();
  ASSERT_TRUE(location && location->isSearching());
  EXPECT_EQ(location->timeout, 15.0);
  EXPECT_TRUE(spins() && pinIsShown() && bandIsShown());
  EXPECT_EQ(line(), QString());

  location->find(berlin(), 1200, false);
  EXPECT_FALSE(spins());
  EXPECT_EQ(line(), u"Berlin, Germany"_s);
  EXPECT_TRUE(weather.asked.empty());
  location->find(berlin(), 800, false);
  ASSERT_EQ(weather.asked.size(), 1U);
  EXPECT_EQ(weather.asked[0], std::pair(52.52, 13.405));
  location->find(berlin(), 20, false);
  location->find(berlin(), 10, true);
  EXPECT_EQ(weather.asked.size(), 1U);
  weather.succeed(mild);
  EXPECT_EQ(line(), u"Berlin, Germany  \u2022  18 °C Partly cloudy"_s);
  EXPECT_TRUE(named<QWidget>("locationField")->accessibleName().endsWith(line()));

  // Both go into the entry and come back from it.
  type("x");
  controller->close();
  const auto saved = entries().value(0);
  ASSERT_TRUE(saved && saved->location() && saved->weather());
  EXPECT_EQ(*saved->location(), *berlin());
  EXPECT_EQ(saved->weather()->symbolCode, mild.symbolCode);

  // The next opening seeks anew; what was found stays until then.
  show();
  EXPECT_EQ(location->searches, 2);
  EXPECT_FALSE(line().isEmpty());
  config.groupProperties()->setBoolForKey(true, Key::useFahrenheitTempScale);
  controller->setWeather(mild);
  EXPECT_TRUE(line().endsWith(u"65 °F Partly cloudy"_s)) << line().toStdString();
  location->find(nullptr, 0, true);
  EXPECT_EQ(line(), u"65 °F Partly cloudy"_s);
}

TEST_F(EntryWindowLocationTest, TheLastWordCountsWhateverItsAccuracyAndFailuresShowNothing) {
  show();
  location->find(berlin(), 5000, true);
  ASSERT_EQ(weather.asked.size(), 1U);
  weather.fail(Error());
  EXPECT_EQ(line(), u"Berlin, Germany"_s);
  // An answer that comes when the window is long gone.
  controller.reset();
  weather.succeed(mild);
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
  breakJournal();
  ASSERT_TRUE(QDir(journalURL.toLocalFile()).removeRecursively());
  location = nullptr;
  newController();
  controller->showWindowInMode(EntryWindowModeStandard);
  EXPECT_FALSE(location);
}

TEST_F(EntryWindowLocationTest, TheSwitchActsOnThisEntryOnly) {
  show();
  location->find(berlin(), 10, false);
  weather.succeed(mild);
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
  weather.succeed(mild);
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

TEST_F(EntryWindowLocationTest, AnEntryThatATextGoesOnWithKeepsItsPlaceAndWeather) {
  show();
  location->find(berlin(), 10, true);
  weather.succeed(mild);
  type("x");
  controller->close();
  show();
  type("y");
  // The process dies; in the next one nothing is sought.
  draft.write({u"xy"_s, entries().value(0)->uuid(), {}});
  controller.reset();
  config.groupProperties()->setBoolForKey(false, Key::addLocationAutomatically);
  EntryDraft next(home.path(u"cache/UnsavedEntry.plist"_s));
  newController(next);
  show();
  controller->close();
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries()[0]->string(), u"xy"_s);
  EXPECT_TRUE(entries()[0]->location() && entries()[0]->weather());

  // As with the text, so when another window takes it over.
  show();
  type("z");
  const auto before = controller;
  newController();
  controller->takeOverUnsavedText(*before);
  EXPECT_EQ(line(), before->window().entryMetadataText());
  EXPECT_FALSE(line().isEmpty());
  EXPECT_TRUE(controller->saveActiveEntry(/*force=*/false));
}

TEST_F(EntryWindowLocationTest, TheSamePlaceIsNotComposedAnewTheSameWeatherIs) {
  show();
  const auto place = berlin();
  controller->setLocation(place);
  controller->setWeather(mild);
  controller->window().setEntryMetadataText(u"marker"_s);
  controller->setLocation(place);
  EXPECT_EQ(line(), u"marker"_s);
  controller->setWeather(mild);
  EXPECT_NE(line(), u"marker"_s);
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
