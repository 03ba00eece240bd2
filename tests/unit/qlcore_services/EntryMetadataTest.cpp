#include "WeatherServer.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/services/QLLocationFormatter.h"
#include "qlcore/services/QLWeatherFormatter.h"
#include "qlcore/services/WeatherForecast.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

TEST(EntryMetadata, ReadsTheSameAfterSavingAndLoading) {
  const TestHome home;
  const auto package =
      QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"J.quillojournal"_s)), /*create=*/true, nullptr);
  ASSERT_TRUE(package);
  // Numbers without a short decimal form.
  QLLocation location{52.5 + 1.0 / 3, -13.1 - 1e-13, {}};
  location.placeName = QLLocationFormatter().placeNameForLocation({52.5219, 13.4132, {}});
  const Date noon = *Date::fromISO8601(u"2026-11-25T12:00:00Z"_s);
  const auto weather =
      WeatherForecast::fromJSON(forecast("2026-11-25T12:00:00Z", "-0.3", "lightssnowshowersandthunder_polartwilight"))
          ->weatherNearest(noon, 0);
  const auto entry = QLJournalEntryFile::newEntry();
  entry->setLocation(location);
  entry->setWeather(weather);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));

  const auto read = QLJournalEntryFile::entryWithUUID(*package, entry->uuid(), nullptr);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->location(), location);
  EXPECT_EQ(read->weather(), weather);
  EXPECT_EQ(QLLocationFormatter().localLocationStringForLocation(*read->location()), u"Berlin, Germany"_s);
  EXPECT_EQ(QLWeatherFormatter(TemperatureScale::Fahrenheit).stringForObjectValue(*read->weather()),
            u"31 °F Light snow showers and thunder"_s);
}

}  // namespace
