#include "journal/model/Timeline.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Answers when it is told to.
class SlowReader final : public JournalReader {
 public:
  void ask(QObject*, const JournalQuestion& question, Answered answered) override {
    asked.emplace_back(question, std::move(answered));
  }
  void count(QObject*, const JournalQuestion&, JournalCountBy, Counted counted) override {
    counts.push_back(std::move(counted));
  }
  void listDamaged(QObject*, Damaged) override {}
  void listConflicts(QObject*, Conflicts) override {}
  void filesDidChange(const QStringList&) override {}

  // Entries of one day each, the newest first; the page that was asked for of `count`.
  void answer(int count) {
    const auto [question, answered] = std::move(asked.front());
    asked.erase(asked.begin());
    JournalAnswer answer;
    for (auto i = question.offset; i < std::min<qint64>(question.offset + question.limit, count); ++i) {
      IndexedEntry entry;
      entry.uuid = QString::number(i);
      entry.day = newest.addDays(-i);
      answer.entries << entry;
    }
    answered(answer);
  }
  void answerCounts(int count) {
    QList<JournalCount> days;
    for (int i = count - 1; i >= 0; --i) days << JournalCount{newest.addDays(-i), {}, 1};
    std::exchange(counts, {}).back()(days);
  }

  QDate newest{2026, 11, 26};
  std::vector<std::pair<JournalQuestion, Answered>> asked;
  std::vector<Counted> counts;
};

struct TimelineTest : testing::Test {
  TimelineTest() {
    QObject::connect(&timeline, &Timeline::didReset, [this](bool isOther) { resets.push_back(isOther); });
  }
  void show(const QString& words) { timeline.show(*JournalQuestion::parse(words, reader.newest)); }

  SlowReader reader;
  Timeline timeline{reader, [](const QLWeather&) { return QString(); }};
  std::vector<bool> resets;
};

}  // namespace

TEST_F(TimelineTest, ShowsTheFirstPageOfAnotherQuestionBeforeItHasBeenCounted) {
  show(u"sea"_s);
  reader.answer(1000);
  ASSERT_EQ(resets, std::vector{true});
  EXPECT_FALSE(timeline.isCounted());
  EXPECT_EQ(timeline.days().first(), (TimelineDay{reader.newest, 1}));
  EXPECT_EQ(timeline.row(0)->identifier, u"0");
  const int firstPage = timeline.total();
  EXPECT_LT(firstPage, 1000);

  reader.answerCounts(1000);
  EXPECT_EQ(resets, (std::vector{true, false}));
  EXPECT_TRUE(timeline.isCounted());
  EXPECT_EQ(timeline.total(), 1000);
  EXPECT_EQ(timeline.rowOfEntry(u"0"_s), 0);
  // The next page is asked for when it is looked at.
  EXPECT_TRUE(reader.asked.empty());
  EXPECT_EQ(timeline.row(firstPage), nullptr);
  EXPECT_EQ(reader.asked.size(), 1U);
}

TEST_F(TimelineTest, WhatFitsOnOnePageIsShownOnce) {
  for (const int count : {0, 3}) {
    resets.clear();
    show(u"sea %1"_s.arg(count));
    reader.answer(count);
    EXPECT_TRUE(timeline.isCounted());
    EXPECT_EQ(timeline.total(), count);
    reader.answerCounts(count);
    EXPECT_EQ(resets, std::vector{true}) << count;
  }
}

// Between the page and the counts an entry came.
TEST_F(TimelineTest, AsksAgainForAPageThatIsNotWhatWasCounted) {
  show(u"sea"_s);
  reader.answer(0);
  reader.answerCounts(3);
  EXPECT_EQ(timeline.total(), 3);
  EXPECT_EQ(timeline.row(0), nullptr);
  reader.answer(3);
  ASSERT_NE(timeline.row(0), nullptr);
}

TEST_F(TimelineTest, NewsOfTheSameQuestionAreShownWhole) {
  show(u"sea"_s);
  reader.answer(1000);
  reader.answerCounts(1000);
  resets.clear();
  timeline.reload();
  reader.answer(1001);
  EXPECT_TRUE(resets.empty());
  EXPECT_EQ(timeline.total(), 1000);
  reader.answerCounts(1001);
  EXPECT_EQ(resets, std::vector{false});
  EXPECT_EQ(timeline.total(), 1001);
}

}  // namespace quillo
