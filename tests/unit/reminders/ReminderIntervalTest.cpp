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
  EXPECT_EQ(interval.baseDateInCurrentTimeZone(), std::nullopt);
}

TEST(ReminderInterval, NamesItsStep) {
  const auto stepOf = [](quint64 unit, quint64 count) {
    ReminderInterval interval;
    interval.setCalendarUnit(unit);
    interval.setIntervalValue(count);
    return interval;
  };
  // Numbered 2, 4, 8 and so on; the second to the eighth are the ones with a text.
  const QStringList keys = u"era year month day hour minute second week weekday weekdayOrdinal quarter"_s.split(u' ');
  for (int i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(keys[i].toStdString());
    const quint64 unit = 2ull << i;
    const bool hasText = i >= 1 && i <= 7;
    EXPECT_EQ(QLAdditions::keyForCalendarUnit(unit), keys[i]);
    EXPECT_EQ(stepOf(unit, 1).stringValue(), u"1 "_s + (hasText ? keys[i] : QString()));
    EXPECT_EQ(stepOf(unit, 2).stringValue(), u"2 "_s + (hasText ? keys[i] + u's' : QString()));
    DateComponents expected;
    expected[static_cast<CalendarUnit>(unit)] = 2;
    EXPECT_EQ(stepOf(unit, 2).dateComponents(), expected);
  }
  for (const quint64 noUnit : {0ull, 1ull, 24ull, 4096ull, ~0ull}) {
    EXPECT_EQ(QLAdditions::keyForCalendarUnit(noUnit), std::nullopt);
    EXPECT_EQ(stepOf(noUnit, 1).stringValue(), u"1 "_s);
    EXPECT_EQ(stepOf(noUnit, 2).dateComponents(), std::nullopt);
  }
  EXPECT_EQ(stepOf(16, 0).stringValue(), u"0 days"_s);
}

TEST(ReminderInterval, DescribesEveryValue) {
  ReminderInterval interval;
  interval.setCalendarUnit(CalendarUnit::Day);
  interval.setIntervalValue(largest);
  const auto tail = [&interval] { return interval.description().section(u"> "_s, 1); };
  EXPECT_TRUE(interval.description().startsWith(u"<ReminderInterval: 0x"_s));
  interval.setBaseDate(Date::fromISO8601(u"2014-03-10T20:00:00Z"_s));
  interval.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
  interval.setValidReminderPeriod(28800.5);
  EXPECT_EQ(tail(),
            u"(unit:16 interval:18446744073709551615 baseDate:2014-03-10 20:00:00 +0000 timezone:Europe/Berlin "
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
