#include "reminders/ReminderBatch.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace quillo {

namespace {

QByteArray lineWith(const QByteArray& rest) {
  return R"({"base":"2014-03-10T20:00:00Z","base_zone":"Europe/Berlin","zone":"Europe/Berlin",)" + rest + "}";
}

}  // namespace

TEST(ReminderBatch, AnswersLines) {
  const struct {
    QByteArray line;
    const char* answer;
  } cases[] = {
      {lineWith(R"("unit":16,"count":1,"period":0,"after":"2014-03-20T21:30:00Z","n":3)"),
       R"({"next":["2014-03-21T20:00:00Z","2014-03-22T20:00:00Z","2014-03-23T20:00:00Z"]})"},
      {lineWith(R"("unit":8,"count":1,"after":"2014-03-20T23:30:00+02:00")"), R"({"next":["2014-04-10T19:00:00Z"]})"},
      {lineWith(R"("unit":4,"count":7000,"after":"2014-03-20T21:30:00Z","n":5)"),
       R"({"next":["9014-03-10T20:00:00Z"]})"},
      {lineWith(R"("unit":16,"count":0,"after":"2014-03-20T21:30:00Z")"), R"({"next":[]})"},
      {lineWith(R"("unit":3,"count":1,"after":"2014-03-20T21:30:00Z")"), R"({"next":[]})"},
      {lineWith(R"("unit":64,"count":9223372036854775808,"after":"2014-03-20T21:30:00Z")"),
       R"({"next":["2014-03-20T23:00:00Z"]})"},
      {lineWith(R"("unit":18446744073709551615,"count":18446744073709551615,"after":"2014-03-20T21:30:00Z")"),
       R"({"next":[]})"},
  };
  for (const auto& row : cases) EXPECT_EQ(answerBatchLine(row.line), row.answer) << row.line.constData();
}

TEST(ReminderBatch, NamesWhatIsWrong) {
  const struct {
    QByteArray line;
    const char* about;
  } cases[] = {
      {"", "JSON"},
      {"[1]", "JSON"},
      {"{", "JSON"},
      {QByteArray(100'000, '['), "JSON"},
      {lineWith(R"("count":1)"), "\"unit\""},
      {lineWith(R"("unit":16,"count":-1)"), "\"count\""},
      {lineWith(R"("unit":16,"count":1.5)"), "\"count\""},
      {lineWith(R"("unit":"16","count":1)"), "\"unit\""},
      {lineWith(R"("unit":16,"count":1,"period":"long")"), "\"period\""},
      {lineWith(R"("unit":16,"count":1,"after":"yesterday")"), "\"after\""},
      {lineWith(R"("unit":16,"count":1,"n":0)"), "\"n\""},
      {lineWith(R"("unit":16,"count":1,"n":1001)"), "\"n\""},
      {R"({"unit":16,"count":1,"base_zone":"UTC"})", "\"base\""},
      {R"({"unit":16,"count":1,"base":"2014-03-10T20:00:00","base_zone":"UTC"})", "\"base\""},
      {R"({"unit":16,"count":1,"base":"2014-03-10T20:00:00Z","base_zone":"Mars/Olympus"})", "\"base_zone\""},
      {R"({"unit":16,"count":1,"base":"2014-03-10T20:00:00Z","base_zone":"UTC","zone":7})", "\"zone\""},
  };
  for (const auto& row : cases) {
    const QByteArray answer = answerBatchLine(row.line);
    const QJsonObject object = QJsonDocument::fromJson(answer).object();
    EXPECT_EQ(object.keys(), QStringList(QStringLiteral("error"))) << answer.constData();
    EXPECT_TRUE(object.value(QStringLiteral("error")).toString().contains(QLatin1StringView(row.about)))
        << row.line.left(100).constData() << answer.constData();
  }
}

TEST(ReminderBatch, EachReminderFollowsTheOneBefore) {
  const QByteArray answer =
      answerBatchLine(lineWith(R"("unit":64,"count":7,"period":3600,"after":"2014-03-29T00:00:00Z","n":1000)"));
  const QJsonArray next = QJsonDocument::fromJson(answer).object().value(QStringLiteral("next")).toArray();
  ASSERT_EQ(next.size(), 1000);
  for (qsizetype i = 1; i < next.size(); ++i) ASSERT_LT(next[i - 1].toString(), next[i].toString());
  // Nine a day: 21:00 to 21:56.
  EXPECT_EQ(next[0].toString(), QStringLiteral("2014-03-29T20:00:00Z"));
  EXPECT_EQ(next[9].toString(), QStringLiteral("2014-03-30T19:00:00Z"));
}

}  // namespace quillo
