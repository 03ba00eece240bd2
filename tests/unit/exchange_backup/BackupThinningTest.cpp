#include "exchange/backup/BackupSettings.h"
#include "exchange/backup/BackupThinning.h"

#include <QTimeZone>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

QDateTime at(const QString& text) {
  return QDateTime::fromString(text, u"yyyy-MM-dd HH:mm"_s);
}

// What stays, in the order given.
QStringList keptOf(QStringList texts, qsizetype whole, const ThinningRule& rule) {
  QList<QDateTime> begun;
  for (const QString& text : texts) begun << at(text);
  const auto superfluous = superfluousBackups(begun, whole, rule);
  for (auto it = superfluous.crbegin(); it != superfluous.crend(); ++it) texts.removeAt(*it);
  return texts;
}

TEST(BackupThinning, KeepsTheNewestAndTheLastOfEachDayWeekAndMonth) {
  const struct {
    const char* what;
    ThinningRule rule;
    QStringList begun;
    qsizetype whole;
    QStringList kept;
  } cases[] = {
      {"one", {}, {u"2026-03-01 10:00"_s}, 0, {u"2026-03-01 10:00"_s}},
      {"the last of each day, in whatever order",
       {.newest = 1, .days = 2, .weeks = 0, .most = 9},
       {u"2026-03-02 09:00"_s, u"2026-03-03 08:00"_s, u"2026-03-02 11:00"_s, u"2026-03-03 12:00"_s},
       3,
       {u"2026-03-02 11:00"_s, u"2026-03-03 12:00"_s}},
      {"days without a backup do not count",
       {.newest = 0, .days = 2, .weeks = 0, .most = 9},
       {u"2026-03-20 09:00"_s, u"2026-03-05 09:00"_s, u"2026-03-04 09:00"_s},
       0,
       {u"2026-03-20 09:00"_s, u"2026-03-05 09:00"_s}},
      {"weeks begin on Monday, also over the new year",
       {.newest = 0, .days = 0, .weeks = 3, .most = 9},
       {u"2027-01-03 09:00"_s, u"2026-12-28 09:00"_s, u"2026-12-27 09:00"_s, u"2026-12-21 09:00"_s},
       0,
       // The 28th is of the week of the 3rd, and the last of its month.
       {u"2027-01-03 09:00"_s, u"2026-12-28 09:00"_s, u"2026-12-27 09:00"_s}},
      {"the last of every month",
       {.newest = 0, .days = 0, .weeks = 0, .most = 9},
       {u"2026-03-02 09:00"_s, u"2026-02-27 09:00"_s, u"2026-02-26 09:00"_s, u"2024-02-01 09:00"_s},
       0,
       {u"2026-03-02 09:00"_s, u"2026-02-27 09:00"_s, u"2024-02-01 09:00"_s}},
      {"no more than the most, the oldest going first",
       {.newest = 5, .days = 14, .weeks = 8, .most = 2},
       {u"2026-03-02 09:00"_s, u"2026-03-03 09:00"_s, u"2026-03-04 09:00"_s},
       2,
       {u"2026-03-03 09:00"_s, u"2026-03-04 09:00"_s}},
      {"the one that is whole, though a clock that was wrong has put others before it",
       {.newest = 1, .days = 1, .weeks = 0, .most = 1},
       {u"2099-01-01 09:00"_s, u"2099-01-01 10:00"_s, u"2026-03-04 09:00"_s},
       2,
       {u"2026-03-04 09:00"_s}},
      {"none of them means all of them",
       {.newest = 0, .days = 0, .weeks = 0, .most = 0},
       {u"2026-03-02 09:00"_s, u"2026-03-02 10:00"_s},
       1,
       {u"2026-03-02 09:00"_s, u"2026-03-02 10:00"_s}},
  };
  for (const auto& one : cases) EXPECT_EQ(keptOf(one.begun, one.whole, one.rule), one.kept) << one.what;
}

TEST(BackupThinning, HoldsForAnyBackups) {
  std::mt19937 random(20261126);
  for (int round = 0; round < 200; ++round) {
    const ThinningRule rule{.newest = int(random() % 6),
                            .days = int(random() % 10),
                            .weeks = int(random() % 6),
                            .most = 1 + int(random() % 30)};
    QList<QDateTime> begun;
    for (auto left = 1 + random() % 60; left > 0; --left)
      begun << at(u"2026-01-01 00:00"_s).addSecs(random() % (200 * 86'400));
    const auto whole = qsizetype(random() % begun.size());
    const auto superfluous = superfluousBackups(begun, whole, rule);
    EXPECT_FALSE(superfluous.contains(whole));
    EXPECT_LE(begun.size() - superfluous.size(), rule.most);
    QList<QDateTime> kept;
    qsizetype wholeNow = 0;
    for (qsizetype i = 0; i < begun.size(); ++i) {
      if (i == whole) wholeNow = kept.size();
      if (!superfluous.contains(i)) kept << begun[i];
    }
    EXPECT_THAT(superfluousBackups(kept, wholeNow, rule), testing::IsEmpty()) << "what was kept stays when asked again";
  }
}

// A backup a day for two years.
TEST(BackupThinning, ReachesBackForMoreThanAYearAsItIs) {
  const ThinningRule rule = BackupSettings().thinning();
  QList<QDateTime> kept;
  for (int day = 0; day < 730; ++day) {
    kept << at(u"2025-01-01 20:00"_s).addDays(day);
    const auto superfluous = superfluousBackups(kept, kept.size() - 1, rule);
    for (auto it = superfluous.crbegin(); it != superfluous.crend(); ++it) kept.removeAt(*it);
    ASSERT_LE(kept.size(), rule.most);
  }
  EXPECT_LT(kept.first(), kept.last().addMonths(-18));
  for (int day = 0; day < 14; ++day) EXPECT_TRUE(kept.contains(kept.last().addDays(-day))) << day;
}

TEST(BackupSettings, IsDueAfterItsInterval) {
  const auto utc = [](const QString& text) {
    QDateTime time = at(text);
    time.setTimeSpec(Qt::UTC);
    return time;
  };
  const QDateTime last = utc(u"2026-03-02 20:00"_s);
  const struct {
    CalendarUnit unit;
    int interval;
    QString now;
    bool isDue;
  } cases[] = {
      {CalendarUnit::Day, 1, u"2026-03-02 23:00"_s, false},   {CalendarUnit::Day, 1, u"2026-03-03 19:59"_s, true},
      {CalendarUnit::Day, 3, u"2026-03-04 20:00"_s, false},   {CalendarUnit::Day, 3, u"2026-03-05 20:00"_s, true},
      {CalendarUnit::Hour, 6, u"2026-03-03 01:00"_s, false},  {CalendarUnit::Hour, 6, u"2026-03-03 02:00"_s, true},
      {CalendarUnit::Week, 2, u"2026-03-09 20:00"_s, false},  {CalendarUnit::Week, 2, u"2026-03-16 20:00"_s, true},
      {CalendarUnit::Month, 1, u"2026-04-01 20:00"_s, false}, {CalendarUnit::Month, 1, u"2026-04-02 20:00"_s, true},
      {CalendarUnit::Day, 1, u"2020-01-01 00:00"_s, true},
  };
  for (const auto& one : cases) {
    const BackupSettings settings{.unit = one.unit, .interval = one.interval};
    EXPECT_EQ(settings.isDue(last, utc(one.now)), one.isDue)
        << settings.inWords().toStdString() << " " << one.now.toStdString();
  }
  EXPECT_TRUE(BackupSettings().isDue({}, last));
}

}  // namespace
}  // namespace quillo
