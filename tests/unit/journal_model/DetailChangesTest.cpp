#include "journal/model/DetailChanges.h"
#include "qlcore/EntryTime.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

EntryDetails detailsAt(const QString& utc, const QString& zone) {
  EntryDetails details{
      Date::fromISO8601(utc).value_or(Date()), zone, {u"one"_s}, QLLocation{52.52, 13.405, u"Berlin"_s}, QLWeather{}};
  return details;
}

QString utc(const EntryDetails& details) {
  return details.creationDate.toISO8601();
}

}  // namespace

TEST(DetailChanges, AReadingIsOfTheEntrysZoneAndStaysInAnother) {
  const struct {
    const char* zone;
    QDate day;
    QTime time;
    const char* utc;
    const char* otherZone;
    const char* otherUtc;
  } cases[] = {
      {"Europe/Berlin", {2026, 3, 12}, {18, 0}, "2026-03-12T17:00:00Z", "Asia/Tokyo", "2026-03-12T09:00:00Z"},
      // The clock leaves that hour out in Berlin; what it read after that is kept.
      {"Europe/Berlin", {2026, 3, 29}, {2, 30}, "2026-03-29T01:30:00Z", "Asia/Tokyo", "2026-03-28T18:30:00Z"},
      // The earlier of the two.
      {"Europe/Berlin", {2026, 10, 25}, {2, 30}, "2026-10-25T00:30:00Z", "UTC", "2026-10-25T02:30:00Z"},
      // A day that Samoa left out.
      {"UTC", {2011, 12, 30}, {12, 0}, "2011-12-30T12:00:00Z", "Pacific/Apia", "2011-12-30T22:00:00Z"},
      {"America/New_York", {9999, 12, 31}, {12, 0}, "9999-12-31T17:00:00Z", "UTC", "9999-12-31T12:00:00Z"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.utc);
    const EntryDetails read =
        withReading(detailsAt(u"2020-01-01T00:00:00Z"_s, QLatin1StringView(c.zone)), c.day, c.time);
    EXPECT_EQ(utc(read), QLatin1StringView(c.utc));
    EXPECT_EQ(utc(withZone(read, QLatin1StringView(c.otherZone))), QLatin1StringView(c.otherUtc));
  }
  const EntryDetails before = detailsAt(u"2020-01-01T00:00:00Z"_s, u"America/New_York"_s);
  EXPECT_EQ(withReading(before, QDate(9999, 12, 31), QTime(23, 0)), before);
  EXPECT_EQ(withReading(before, QDate(), QTime(23, 0)), before);
}

TEST(DetailChanges, WeatherGoesWithItsPlaceAndDay) {
  const EntryDetails before = detailsAt(u"2026-03-12T22:00:00Z"_s, u"Europe/Berlin"_s);
  const auto keeps = [&](const EntryDetails& after) { return withoutStaleWeather(before, after).weather.has_value(); };
  EntryDetails renamed = before;
  renamed.location = QLLocation{52.52, 13.405, u"Home"_s};
  EXPECT_TRUE(keeps(renamed));
  EXPECT_TRUE(keeps(withReading(before, QDate(2026, 3, 12), QTime(0, 0))));
  EXPECT_FALSE(keeps(withReading(before, QDate(2026, 3, 13), QTime(0, 0))));
  EXPECT_TRUE(keeps(withZone(before, u"Asia/Tokyo"_s)));
  EntryDetails moved = before;
  moved.location = QLLocation{53.52, 13.405, u"Berlin"_s};
  EXPECT_FALSE(keeps(moved));
  moved.location.reset();
  EXPECT_FALSE(keeps(moved));
}

TEST(DetailChanges, ReadsTagsAsTheyAreTyped) {
  const struct {
    QString line;
    QStringList tags;
  } cases[] = {{u""_s, {}},
               {u" , ,"_s, {}},
               {u"evening, long  walk ,Evening"_s, {u"evening"_s, u"long walk"_s}},
               {u"#evening #work, # #rain"_s, {u"evening"_s, u"work"_s, u"rain"_s}},
               {u"c#, ##x"_s, {u"c#"_s, u"x"_s}}};
  for (const auto& [line, tags] : cases) {
    EXPECT_EQ(tagsOfLine(line), tags) << line.toStdString();
    EXPECT_EQ(tagsOfLine(lineOfTags(tags)), tags) << line.toStdString();
  }
}

TEST(DetailChanges, FindsZonesByTheirCities) {
  EXPECT_EQ(zonesNamed(u"tok"_s).value(0), u"Asia/Tokyo"_s);
  EXPECT_EQ(zonesNamed(u"new y"_s).value(0), u"America/New_York"_s);
  EXPECT_EQ(zonesNamed(u"europe/ber"_s).value(0), u"Europe/Berlin"_s);
  EXPECT_EQ(zonesNamed(u"utc"_s).value(0), u"UTC"_s);
  EXPECT_EQ(zonesNamed(u"nowhere"_s), QStringList());
  EXPECT_EQ(zonesNamed(u"a"_s, 3).size(), 3);
}

}  // namespace quillo
