#include "config/Keys.h"
#include "reminders/DateComponentsQLAdditions.h"
#include "reminders/ReminderInterval.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Remembers what was set, and in which order.
struct Store {
  PropertyListDictionary values;
  QStringList order;

  [[nodiscard]] std::optional<PropertyListValue> valueForKey(const QString& key) const {
    return values.contains(key) ? std::optional(values.value(key)) : std::nullopt;
  }
  void setObjectForKey(const PropertyListValue& value, const QString& key) {
    values.insert(key, value);
    order << key;
  }
};

constexpr quint64 largest = std::numeric_limits<quint64>::max();

}  // namespace

TEST(ReminderInterval, EmptyStoreGivesInitialValues) {
  const ReminderInterval interval = ReminderInterval::reminderIntervalFromUserDefaults(PropertyListDictionary());
  EXPECT_EQ(interval.calendarUnit(), 0u);
  EXPECT_EQ(interval.intervalValue(), 0u);
  EXPECT_EQ(interval.baseDate(), std::nullopt);
  EXPECT_EQ(interval.baseCalendar(), std::nullopt);
  EXPECT_EQ(interval.validReminderPeriod(), 0.0);
  EXPECT_EQ(interval.baseDateInCurrentTimeZone(), std::nullopt);
  EXPECT_EQ(interval.stringValue(), u"0 "_s);
}

TEST(ReminderInterval, SurvivesTheStore) {
  Store store;
  ReminderInterval written;
  written.setCalendarUnit(CalendarUnit::Hour);
  written.setIntervalValue(largest);
  written.setValidReminderPeriod(28800.5);
  written.setBaseDate(Date(416000000));
  written.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
  written.writeToUserDefaults(store);
  EXPECT_EQ(store.order, QStringList({Key::remindersFrequency, Key::remindersInterval, Key::remindersValidPeriod,
                                      Key::remindersBaseDate, Key::remindersBaseDateTimezone}));
  EXPECT_EQ(store.values.value(Key::remindersBaseDateTimezone), PropertyListValue(u"Europe/Berlin"_s));

  const ReminderInterval read = ReminderInterval::reminderIntervalFromUserDefaults(store);
  EXPECT_EQ(read.calendarUnit(), 32u);
  EXPECT_EQ(read.intervalValue(), largest);
  EXPECT_EQ(read.validReminderPeriod(), 28800.5);
  EXPECT_EQ(read.baseDate(), written.baseDate());
  EXPECT_EQ(read.baseCalendar(), written.baseCalendar());

  store.order.clear();
  ReminderInterval().writeToUserDefaults(store);
  EXPECT_EQ(store.order.size(), 3);
  EXPECT_EQ(store.values.value(Key::remindersBaseDate), PropertyListValue(Date(416000000))) << "an old value stays";
}

TEST(ReminderInterval, TakesAnythingThatIsStored) {
  const PropertyListDictionary values{
      {Key::remindersFrequency, u"16"_s},   {Key::remindersInterval, 3.9},
      {Key::remindersValidPeriod, true},    {Key::remindersBaseDate, u"2014-03-10"_s},
      {Key::remindersBaseDateTimezone, 42},
  };
  ReminderInterval interval = ReminderInterval::reminderIntervalFromUserDefaults(values);
  EXPECT_EQ(interval.calendarUnit(), 16u);
  EXPECT_EQ(interval.intervalValue(), 3u);
  EXPECT_EQ(interval.validReminderPeriod(), 1.0);
  EXPECT_EQ(interval.baseDate(), std::nullopt);
  EXPECT_EQ(interval.baseCalendar(), std::nullopt);

  for (const QString& zone : {u"Mars/Olympus"_s, u"Atlantis"_s, u"../../../dev/zero"_s, u"/etc/localtime"_s, u""_s}) {
    interval = ReminderInterval::reminderIntervalFromUserDefaults(
        PropertyListDictionary{{Key::remindersBaseDateTimezone, zone}});
    EXPECT_EQ(interval.baseCalendar(), std::nullopt) << zone.toStdString();
  }
}

TEST(ReminderInterval, NamesItsStep) {
  const struct {
    quint64 unit;
    const char* key;
    const char* one;
    const char* many;
  } cases[] = {
      {2, "era", "1 ", "2 "},
      {4, "year", "1 year", "2 years"},
      {8, "month", "1 month", "2 months"},
      {16, "day", "1 day", "2 days"},
      {32, "hour", "1 hour", "2 hours"},
      {64, "minute", "1 minute", "2 minutes"},
      {128, "second", "1 second", "2 seconds"},
      {256, "week", "1 week", "2 weeks"},
      {512, "weekday", "1 ", "2 "},
      {1024, "weekdayOrdinal", "1 ", "2 "},
      {2048, "quarter", "1 ", "2 "},
      {0, nullptr, "1 ", "2 "},
      {1, nullptr, "1 ", "2 "},
      {24, nullptr, "1 ", "2 "},
      {4096, nullptr, "1 ", "2 "},
      {largest, nullptr, "1 ", "2 "},
  };
  for (const auto& row : cases) {
    const auto key = QLAdditions::keyForCalendarUnit(row.unit);
    EXPECT_EQ(key, row.key ? std::optional(QLatin1StringView(row.key)) : std::nullopt) << row.unit;
    ReminderInterval interval;
    interval.setCalendarUnit(row.unit);
    interval.setIntervalValue(1);
    EXPECT_EQ(interval.stringValue(), QLatin1StringView(row.one));
    interval.setIntervalValue(2);
    EXPECT_EQ(interval.stringValue(), QLatin1StringView(row.many));
    const auto step = interval.dateComponents();
    ASSERT_EQ(step.has_value(), row.key != nullptr) << row.unit;
    if (step) {
      DateComponents expected;
      expected[static_cast<CalendarUnit>(row.unit)] = 2;
      EXPECT_EQ(*step, expected);
    }
  }
  ReminderInterval interval;
  interval.setCalendarUnit(CalendarUnit::Day);
  EXPECT_EQ(interval.stringValue(), u"0 days"_s);
}

TEST(ReminderInterval, DescribesEveryValue) {
  ReminderInterval interval;
  interval.setCalendarUnit(CalendarUnit::Day);
  interval.setIntervalValue(largest);
  const auto tail = [&interval] { return interval.description().section(u"> "_s, 1); };
  EXPECT_TRUE(interval.description().startsWith(u"<ReminderInterval: 0x"_s));
  EXPECT_EQ(tail(), u"(unit:16 interval:18446744073709551615 baseDate:(null) timezone:(null) period:0.000000)"_s);
  interval.setBaseDate(Date::fromISO8601(u"2014-03-10T20:00:00Z"_s));
  interval.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
  interval.setIntervalValue(2);
  interval.setValidReminderPeriod(28800.5);
  EXPECT_EQ(tail(),
            u"(unit:16 interval:2 baseDate:2014-03-10 20:00:00 +0000 timezone:Europe/Berlin "
            u"period:28800.500000)"_s);
}

TEST(ReminderInterval, BaseDateKeepsItsWallClockReading) {
  ReminderInterval interval;
  interval.setBaseDate(Date::fromISO8601(u"2014-03-10T08:00:00Z"_s));
  interval.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
  qputenv("TZ", "America/New_York");
  EXPECT_EQ(interval.baseDateInCurrentTimeZone(), Date::fromISO8601(u"2014-03-10T13:00:00Z"_s));
  qputenv("TZ", "Asia/Kolkata");
  EXPECT_EQ(interval.baseDateInCurrentTimeZone(), Date::fromISO8601(u"2014-03-10T03:30:00Z"_s));
  qunsetenv("TZ");
}

}  // namespace quillo
