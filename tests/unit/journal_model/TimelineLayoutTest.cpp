#include "journal/model/JournalSearch.h"
#include "journal/model/TimelineLayout.h"
#include "journal/model/WritingStreak.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

static QDate day(int number) {
  return QDate(2026, 11, 1).addDays(number - 1);
}

TEST(TimelineLayout, FindsEveryPlaceAndRow) {
  const TimelineLayout rows({{day(24), 1}, {day(13), 3}, {day(1), 2}}, 10, 100);
  EXPECT_EQ(rows.rowCount(), 6);
  EXPECT_EQ(rows.height(), 630);
  const int tops[] = {10, 120, 220, 320, 430, 530};
  for (int row = 0; row < 6; ++row) {
    EXPECT_EQ(rows.row(row).top, tops[row]);
    EXPECT_EQ(rows.rowAt(tops[row]), row);
    EXPECT_EQ(rows.rowAt(tops[row] + 99), row);
  }
  for (const int heading : {0, 9, 110, 119, 420, 429}) EXPECT_EQ(rows.rowAt(heading), -1) << heading;
  EXPECT_EQ(rows.rowAt(-1), -1);
  EXPECT_EQ(rows.rowAt(630), -1);
  EXPECT_EQ(rows.rowWithHeading(1).top, 110);
  EXPECT_EQ(rows.rowWithHeading(2).top, 220);
  EXPECT_EQ(rows.dayOfRow(3), day(13));
  EXPECT_EQ(rows.dayOfRow(6), QDate());
  EXPECT_EQ(rows.firstRowOfDay(day(1)), 4);
  EXPECT_EQ(rows.firstRowOfDay(day(2)), -1);
  EXPECT_EQ(TimelineLayout().rowAt(0), -1);
  EXPECT_EQ(TimelineLayout().height(), 0);
}

TEST(WritingStreak, CountsDaysInARow) {
  const struct {
    QList<QDate> days;
    WritingStreak streak;
  } cases[] = {
      {{}, {0, 0, 0}},
      {{day(24)}, {1, 1, 1}},
      {{day(23)}, {1, 1, 1}},  // today may still come
      {{day(22)}, {1, 0, 1}},
      {{day(1), day(2), day(3), day(22), day(23), day(24)}, {6, 3, 3}},
      {{day(1), day(2), day(3), day(23)}, {4, 1, 3}},
      {{day(24), day(25)}, {1, 1, 1}},  // of a clock that was wrong
  };
  for (const auto& [days, streak] : cases) EXPECT_EQ(WritingStreak::of(days, day(24)), streak) << days.size();
}

TEST(JournalSearch, MakesOneQuestionOfWordsAndFilters) {
  JournalSearch search;
  search.setWords(u"river -rain since:2026-11-10"_s);
  search.addFilter(SearchFilter::tag(u"evening"_s));
  search.addFilter(SearchFilter::tag(u"evening"_s));
  search.addFilter(SearchFilter::place(u"Berlin, Germany"_s));
  search.addFilter({SearchFilter::Kind::Day, {}, day(3)});
  search.addFilter({SearchFilter::Kind::Month, {}, day(3)});  // takes the day's place
  EXPECT_EQ(search.texts().size(), 3);
  const auto question = search.question(day(24), nullptr);
  ASSERT_TRUE(question);
  EXPECT_EQ(question->tags, (QList<JournalQuestion::Name>{{u"evening"_s, false}}));
  EXPECT_EQ(question->places, (QList<JournalQuestion::Name>{{u"Berlin, Germany"_s, false}}));
  EXPECT_EQ(question->firstDay, day(10));
  EXPECT_EQ(question->lastDay, day(30));
  EXPECT_EQ(search.searchedWords(day(24)), QStringList{u"river"_s});

  search.removeFilter(2);
  EXPECT_EQ(search.question(day(24), nullptr)->lastDay, std::nullopt);
  search.setWords(u"on:nonsense"_s);
  QString problem;
  EXPECT_FALSE(search.question(day(24), &problem));
  EXPECT_FALSE(problem.isEmpty());
}

}  // namespace quillo
