#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "preferences/model/ReminderChoice.h"
#include "reminders/ReminderInterval.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

Date local(int year, int month, int day, int hour, int minute = 0) {
  return Date::fromDateTime(QDateTime({year, month, day}, {hour, minute}));
}

TEST(ReminderChoice, DaysAreSaidOnceAndByTheirNamesWhileTheyAreNear) {
  const QDate today(2026, 11, 25);
  const struct {
    QList<Date> dates;
    QString words;
  } rows[] = {
      {{}, {}},
      {{local(2026, 11, 25, 15), local(2026, 11, 26, 9), local(2026, 11, 26, 12), local(2026, 11, 27, 9)},
       u"today 15:00 · tomorrow 09:00 · 12:00 · Friday 09:00"_s},
      {{local(2026, 12, 1, 9, 5), local(2026, 12, 2, 9)}, u"Tuesday 09:05 · 2 December 09:00"_s},
      {{local(2027, 11, 25, 9)}, u"25 November 2027 09:00"_s},
      {{local(2026, 11, 24, 9)}, u"24 November 09:00"_s},
  };
  for (const auto& row : rows) EXPECT_EQ(datesInWords(row.dates, today), row.words);
}

TEST(ReminderChoice, WhatIsMissingInTheSettingsIsSuggestedAsAWhole) {
  const TestHome home;
  const auto list = PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(home.path(u"l.plist"_s)));
  ReminderChoice choice = ReminderChoice::ofSettings(*list, /*isOn=*/true);
  EXPECT_FALSE(hasReminderRule(*list));
  EXPECT_EQ(choice.inWords(), u"Every day at 21:00."_s);
  EXPECT_TRUE(choice.opensWindow && choice.notifies && !choice.playsSound);
  choice.rule.interval()->writeToUserDefaults(*list);
  list->setBoolForKey(true, Key::remindersPlaySound);
  choice = ReminderChoice::ofSettings(*list, /*isOn=*/true);
  EXPECT_TRUE(hasReminderRule(*list));
  EXPECT_FALSE(choice.opensWindow || choice.notifies) << "with a rule, what is not set is off";
  EXPECT_TRUE(choice.playsSound);
}

TEST(ReminderChoice, SaysWhatIsWrong) {
  const ReminderChoice fine = ReminderChoice::suggested(Date::now());
  EXPECT_EQ(fine.problem(), QString());
  EXPECT_EQ(fine.next(Date::now(), 5).size(), 5);
  ReminderChoice choice = fine;
  choice.rule.count = 0;
  EXPECT_EQ(choice.problem(), u"A number from 1 to 9999 is needed."_s);
  EXPECT_TRUE(choice.next(Date::now(), 5).isEmpty());
  choice = fine;
  choice.rule.unit = CalendarUnit::Hour;
  choice.rule.window = DailyWindow{540, 540};
  EXPECT_EQ(choice.problem(), u"The second time has to be later than the first."_s);
  // Of days there is no window to be wrong.
  choice.rule.unit = CalendarUnit::Day;
  EXPECT_EQ(choice.problem(), QString());
}

}  // namespace
}  // namespace quillo
