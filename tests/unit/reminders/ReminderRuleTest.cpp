#include "reminders/ReminderInterval.h"
#include "reminders/ReminderRule.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

const Calendar berlin = *Calendar::withTimeZoneName(u"Europe/Berlin"_s);
// 09:30 there.
const Date morning = *Date::fromISO8601(u"2026-11-25T08:30:00Z"_s);

ReminderInterval intervalOf(CalendarUnit unit, quint64 count, double period) {
  ReminderInterval interval;
  interval.setCalendarUnit(unit);
  interval.setIntervalValue(count);
  interval.setBaseDate(morning);
  interval.setBaseCalendar(berlin);
  interval.setValidReminderPeriod(period);
  return interval;
}

TEST(ReminderRule, WhatTheSettingsSayIsARuleAndBack) {
  const struct {
    CalendarUnit unit;
    quint64 count;
    double period;
    bool isRule;
    std::optional<DailyWindow> window;
    QString words;
  } rows[] = {
      {CalendarUnit::Hour, 3, 27000, true, DailyWindow{570, 1020}, u"Every 3 hours between 09:30 and 17:00"_s},
      {CalendarUnit::Minute, 1, 0, true, {}, u"Every minute"_s},
      {CalendarUnit::Day, 1, 0, true, {}, u"Every day at 09:30"_s},
      // The window means nothing to a step of days.
      {CalendarUnit::Week, 2, 27000, true, {}, u"Every 2 weeks at 09:30"_s},
      // Over midnight; of the end only the time of day counts.
      {CalendarUnit::Hour, 1, 16 * 3600.0, true, DailyWindow{570, 1530}, u"Every hour between 09:30 and 01:30"_s},
      {CalendarUnit::Hour, 1, 26 * 3600.0, true, DailyWindow{570, 690}, u"Every hour between 09:30 and 11:30"_s},
      {CalendarUnit::Hour, 1, -60, true, DailyWindow{570, 2009}, u"Every hour between 09:30 and 09:29"_s},
      {CalendarUnit::Hour, 1, 10, true, DailyWindow{570, 2010}, u"Every hour between 09:30 and 09:30"_s},
      // Without an end, and none.
      {CalendarUnit::Hour, 1, std::numeric_limits<double>::quiet_NaN(), false, {}, {}},
      {CalendarUnit::Day, 0, 0, false, {}, {}},
      {CalendarUnit::Second, 5, 0, false, {}, {}},
      {CalendarUnit::Quarter, 1, 0, false, {}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const ReminderInterval interval = intervalOf(row.unit, row.count, row.period);
    const auto rule = ReminderRule::ofInterval(interval);
    ASSERT_EQ(rule.has_value(), row.isRule);
    if (!rule) continue;
    EXPECT_EQ(rule->window, row.window);
    EXPECT_EQ(reminderInWords(interval), row.words);
    const auto back = rule->interval();
    ASSERT_TRUE(back);
    EXPECT_EQ(back->baseDate(), morning);
    EXPECT_EQ(back->intervalValue(), row.count);
    // The same reminders, whatever is written.
    for (const char16_t* after : {u"2026-11-25T03:00:00Z", u"2026-11-25T10:15:00Z", u"2026-11-25T20:00:00Z"}) {
      const auto date = Date::fromISO8601(QString::fromUtf16(after));
      EXPECT_EQ(nextReminders(*back, *date, 3), nextReminders(interval, *date, 3));
    }
  }
}

TEST(ReminderRule, OnTheDotAndInsideTheCalendar) {
  ReminderRule rule{.starting = morning.addingTimeInterval(17.4), .calendar = berlin};
  EXPECT_EQ(rule.interval()->baseDate(), morning);
  rule.unit = CalendarUnit::Hour;
  rule.window = DailyWindow{60, 120};
  EXPECT_EQ(rule.interval()->baseDate(), Date::fromISO8601(u"2026-11-25T00:00:00Z"_s));
  rule.starting = Date(std::numeric_limits<double>::infinity());
  EXPECT_FALSE(rule.interval());
}

}  // namespace
}  // namespace quillo
