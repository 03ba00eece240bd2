#include "foundation/Calendar.h"
#include "foundation/RelativeDateText.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 allUnits = 4094;

Calendar calendarIn(const char* zone) {
  return Calendar::withTimeZoneName(QLatin1StringView(zone)).value_or(Calendar(TimeZone::utc()));
}

Date instant(const char* text) {
  return Date::fromISO8601(QLatin1StringView(text)).value_or(Date(0));
}

std::string textOf(std::optional<Date> date) {
  return date ? date->toISO8601().toStdString() : "nothing";
}

DateComponents reading(qint64 year, qint64 month, qint64 day, qint64 hour = 0, qint64 minute = 0, qint64 second = 0) {
  return {{}, year, month, day, hour, minute, second, {}, {}, {}, {}};
}

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

TEST(Calendar, PlacesReadingsAroundChangesOfTheClock) {
  const struct {
    const char* what;
    const char* zone;
    DateComponents parts;
    const char* expected;
  } cases[] = {
      {"gap moves forward by an hour", "Europe/Berlin", reading(2014, 3, 30, 2, 30), "2014-03-30T01:30:00Z"},
      {"twice is the earlier", "Europe/Berlin", reading(2014, 10, 26, 2, 30), "2014-10-26T00:30:00Z"},
      {"gap of half an hour", "Australia/Lord_Howe", reading(2014, 10, 5, 2, 15), "2014-10-04T15:45:00Z"},
      {"half an hour twice", "Australia/Lord_Howe", reading(2014, 4, 6, 1, 45), "2014-04-05T14:45:00Z"},
      {"day left out", "Pacific/Apia", reading(2011, 12, 30, 10), "2011-12-30T20:00:00Z"},
      {"local mean time", "Europe/Berlin", reading(1582, 10, 10), "1582-10-09T23:06:32Z"},
      {"first year", "UTC", reading(1, 1, 1), "0001-01-01T00:00:00Z"},
      {"far gap", "Europe/Berlin", reading(2500, 3, 28, 2, 30), "2500-03-28T01:30:00Z"},
      {"month 13", "UTC", reading(2013, 13, 1), "2014-01-01T00:00:00Z"},
      {"day 0 of March", "UTC", reading(2012, 3, 0), "2012-02-29T00:00:00Z"},
      {"minutes count on", "UTC", reading(2014, 1, 1, 0, 1441, -1), "2014-01-02T00:00:59Z"},
      {"before the calendar", "UTC", reading(1, 1, 0), "nothing"},
      {"after the calendar", "UTC", reading(10000, 1, 1), "nothing"},
      {"absurd", "UTC", reading(2014, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()),
       "nothing"},
      {"no parts", "UTC", {}, "0001-01-01T00:00:00Z"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(textOf(calendarIn(row.zone).dateFromComponents(row.parts)), row.expected) << row.zone << ' ' << row.what;
}

TEST(Calendar, TakesDatesApart) {
  DateComponents expected = reading(2014, 12, 30, 21, 5, 7);
  expected.era = 1;
  expected.week = 1;
  expected.weekday = 3;
  expected.weekdayOrdinal = 5;
  expected.quarter = 4;
  const Date date = instant("2014-12-30T20:05:07Z").addingTimeInterval(0.75);
  EXPECT_EQ(calendarIn("Europe/Berlin").componentsFromDate(allUnits, date), expected);
  DateComponents dayOnly;
  dayOnly.day = 31;
  EXPECT_EQ(calendarIn("Asia/Kolkata").componentsFromDate(16, date), dayOnly);
  // Both hours of the repeat read the same.
  EXPECT_EQ(calendarIn("Europe/Berlin").componentsFromDate(252, instant("2014-10-26T01:30:00Z")),
            reading(2014, 10, 26, 2, 30));
  EXPECT_EQ(calendarIn("UTC").componentsFromDate(allUnits, instant("2016-02-29T00:00:00Z"))->week, 10);
  for (const double seconds : {notANumber, infinite, -infinite, 1e300, -7e10, 3e11})
    EXPECT_EQ(calendarIn("Europe/Berlin").componentsFromDate(allUnits, Date(seconds)), std::nullopt) << seconds;
}

TEST(Calendar, AddsUnits) {
  static constexpr qint64 most = std::numeric_limits<qint64>::max();
  const struct {
    const char* zone;
    const char* date;
    qint64 count;
    CalendarUnit unit;
    const char* expected;
  } cases[] = {
      {"Europe/Berlin", "2014-01-31T09:00:00Z", 1, CalendarUnit::Month, "2014-02-28T09:00:00Z"},
      {"Europe/Berlin", "2012-02-29T09:00:00Z", 1, CalendarUnit::Year, "2013-02-28T09:00:00Z"},
      {"Europe/Berlin", "2014-01-31T09:00:00Z", 1, CalendarUnit::Quarter, "2014-04-30T08:00:00Z"},
      {"Europe/Berlin", "2014-03-29T20:00:00Z", 1, CalendarUnit::Day, "2014-03-30T19:00:00Z"},
      {"Europe/Berlin", "2014-03-29T01:30:00Z", 1, CalendarUnit::Day, "2014-03-30T01:30:00Z"},
      {"Europe/Berlin", "2014-10-25T00:30:00Z", 1, CalendarUnit::Weekday, "2014-10-26T00:30:00Z"},
      {"Europe/Berlin", "2014-10-26T01:30:00Z", 0, CalendarUnit::Day, "2014-10-26T01:30:00Z"},
      {"Europe/Berlin", "2014-10-19T00:30:00Z", 2, CalendarUnit::WeekdayOrdinal, "2014-11-02T01:30:00Z"},
      {"Pacific/Apia", "2011-12-29T20:00:00Z", 2, CalendarUnit::Day, "2011-12-30T20:00:00Z"},
      {"UTC", "2014-01-01T00:00:00Z", 90, CalendarUnit::Second, "2014-01-01T00:01:30Z"},
      {"UTC", "2014-01-01T00:00:00Z", 1, CalendarUnit::Era, "nothing"},
      {"UTC", "2014-01-01T00:00:00Z", most, CalendarUnit::Year, "nothing"},
      {"UTC", "2014-01-01T00:00:00Z", most, CalendarUnit::Minute, "nothing"},
      {"UTC", "0001-01-01T00:00:00Z", -1, CalendarUnit::Day, "nothing"},
      {"UTC", "9999-12-31T00:00:00Z", 1, CalendarUnit::Day, "nothing"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(textOf(calendarIn(row.zone).dateByAdding(row.count, row.unit, instant(row.date))), row.expected)
        << row.zone << ' ' << row.date << " + " << row.count << " of " << static_cast<quint64>(row.unit);
  EXPECT_EQ(calendarIn("UTC").dateByAdding(1, CalendarUnit::Month, Date(0.25)), Date(31 * 86400 + 0.25));
  EXPECT_EQ(calendarIn("UTC").dateByAdding(0, CalendarUnit::Day, Date(notANumber)), std::nullopt);
}

TEST(Calendar, CountsWholeUnits) {
  const Calendar berlin = calendarIn("Europe/Berlin");
  const Date base = instant("2014-01-31T09:00:00Z");
  EXPECT_EQ(berlin.wholeUnitsBetween(base, instant("2014-02-28T08:59:59Z"), CalendarUnit::Month), 0);
  EXPECT_EQ(berlin.wholeUnitsBetween(base, instant("2014-02-28T09:00:00Z"), CalendarUnit::Month), 1);
  EXPECT_EQ(berlin.wholeUnitsBetween(base, instant("2014-03-30T20:00:00Z"), CalendarUnit::Month), 1);
  EXPECT_EQ(berlin.wholeUnitsBetween(base, instant("2014-01-31T08:00:00Z"), CalendarUnit::Hour), -1);
  EXPECT_EQ(berlin.wholeUnitsBetween(base, base, CalendarUnit::Era), std::nullopt);
  EXPECT_EQ(berlin.wholeUnitsBetween(base, Date(infinite), CalendarUnit::Second), std::nullopt);
}

TEST(TimeZone, KnowsTheSystemsNamesOnly) {
  EXPECT_EQ(TimeZone::timeZoneWithName(u"Europe/Berlin"_s)->name(), u"Europe/Berlin"_s);
  for (const QString& name :
       {u""_s, u"Mars/Olympus"_s, u"Atlantis"_s, u"Europe"_s, u"europe/berlin"_s, u"tzdata.zi"_s, u"/etc/localtime"_s,
        u"../../../dev/tty"_s, QString(100'000, u'A'), u"Europe/Berlin\0x"_s})
    EXPECT_EQ(TimeZone::timeZoneWithName(name), std::nullopt) << name.left(40).toStdString();
}

TEST(TimeZone, SystemZoneIsAskedAnew) {
  for (const char* name : {"Asia/Kolkata", ":America/New_York", "/usr/share/zoneinfo/Europe/Berlin"}) {
    qputenv("TZ", name);
    EXPECT_TRUE(QLatin1StringView(name).endsWith(TimeZone::systemTimeZone().name())) << name;
  }
  // A rule in place of a name.
  qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(textOf(Calendar::currentCalendar().dateFromComponents(reading(2014, 7, 1, 12))), "2014-07-01T10:00:00Z");
  qputenv("TZ", "Mars/Olympus");
  EXPECT_EQ(TimeZone::systemTimeZone().secondsFromUTC(0), 0);
  qunsetenv("TZ");
}

TEST(RelativeDateText, TakesTheStyleOfOneLocaleAndTheWordsOfAnother) {
  // Cairo keeps summer time again since 2023, which older zone data does not know: 19:00 UTC is 22:00 there in July.
  const Date far = instant("2024-07-10T19:00:00Z");
  const Calendar utc(TimeZone::utc());
  const QDateTime evening(QDateTime::currentDateTimeUtc().date(), QTime(21, 0), Qt::UTC);
  const struct {
    const char *style, *language;
    QString today, far;
  } rows[] = {
      {"en_US", "en", u"Today at 9:00 PM"_s, u"7/10/24, 10:00 PM"_s},
      {"de_DE", "de", u"heute um 21:00"_s, u"10.07.24, 22:00"_s},
      {"de_DE", "en", u"Today at 21:00"_s, u"10.07.24, 22:00"_s},
      // Words of theirs, the digits or the place of "PM", stay out.
      {"bg_BG", "en", u"Today at 21:00"_s, u"10.07.24, 22:00"_s},
      {"fr_CA", "en", u"Today at 21:00"_s, u"2024-07-10, 22:00"_s},
      {"ko_KR", "en", u"Today at 9:00 PM"_s, u"24. 7. 10., 10:00 PM"_s},
      {"ar_EG", "en", u"Today at 9:00 PM"_s, u"10/7/2024, 10:00 PM"_s},
      {"th_TH", "en", u"Today at 21:00"_s, u"10/7/67, 22:00"_s},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.style << " in " << row.language);
    // The space before "PM" is one of several.
    const auto text = [&row](Date date, const Calendar& calendar) {
      return relativeDateText(date, calendar, row.style, row.language).simplified();
    };
    EXPECT_EQ(text(Date::fromDateTime(evening), utc), row.today)
        << text(Date::fromDateTime(evening), utc).toStdString();
    EXPECT_EQ(text(far, calendarIn("Africa/Cairo")), row.far) << text(far, calendarIn("Africa/Cairo")).toStdString();
  }
  EXPECT_EQ(relativeDateText(Date::fromDateTime(evening.addDays(1)), utc, "de_DE"), u"Tomorrow at 21:00"_s);
  EXPECT_EQ(relativeDateText(Date::fromDateTime(evening), utc, "C"), u"Today at 21:00"_s);
  EXPECT_EQ(relativeDateText(Date(1e300), utc), QString());
  for (const QByteArray& odd : {QByteArray(), QByteArray("x"), QByteArray(4096, '_'), QByteArray("en_\xff")})
    EXPECT_FALSE(relativeDateText(far, utc, odd).isEmpty()) << odd.constData();
}

TEST(RelativeDateText, TheStyleIsWhatTheEnvironmentNames) {
  const struct {
    const char *all, *time, *lang, *locale;
  } rows[] = {{"", "de_DE.UTF-8@euro", "en_US.UTF-8", "de_DE"},
              {"fr_FR", "de_DE", "en_US", "fr_FR"},
              {"", "", "en_GB.UTF-8", "en_GB"},
              {"", "C.UTF-8", "de_DE", "C"},
              {"", "", "", "C"}};
  const char* const names[] = {"LC_ALL", "LC_TIME", "LANG"};
  QByteArray before[3];
  for (int i = 0; i < 3; ++i) before[i] = qgetenv(names[i]);
  for (const auto& row : rows) {
    const char* const values[] = {row.all, row.time, row.lang};
    for (int i = 0; i < 3; ++i) qputenv(names[i], values[i]);
    EXPECT_EQ(localeOfTimes(), row.locale);
  }
  for (int i = 0; i < 3; ++i) qputenv(names[i], before[i]);
}

}  // namespace quillo
