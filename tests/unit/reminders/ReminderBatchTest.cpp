#include "reminders/ReminderBatch.h"

#include <QByteArrayList>

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
      // A window of an hour, on both sides of a change of the clock.
      {lineWith(R"("unit":64,"count":7,"period":3600,"after":"2014-03-29T20:50:00Z","n":3)"),
       R"({"next":["2014-03-29T20:56:00Z","2014-03-30T19:00:00Z","2014-03-30T19:07:00Z"]})"},
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
  EXPECT_EQ(answerBatchLine(lineWith(R"("unit":64,"count":1,"n":1000)")).count('Z'), 1000);
}

TEST(ReminderBatch, NamesWhatIsWrong) {
  const QByteArray noBase = R"({"unit":16,"count":1,"base_zone":"UTC")";
  const QByteArray base = noBase + R"(,"base":"2014-03-10T20:00:00)";
  const struct {
    const char* about;
    QByteArrayList lines;
  } cases[] = {
      {"JSON", {"", "[1]", "{", QByteArray(100'000, '[')}},
      {"\"unit\"", {lineWith(R"("count":1)"), lineWith(R"("unit":"16","count":1)")}},
      {"\"count\"", {lineWith(R"("unit":16,"count":-1)"), lineWith(R"("unit":16,"count":1.5)")}},
      {"\"period\"", {lineWith(R"("unit":16,"count":1,"period":"long")")}},
      {"\"after\"", {lineWith(R"("unit":16,"count":1,"after":"yesterday")")}},
      {"\"n\"", {lineWith(R"("unit":16,"count":1,"n":0)"), lineWith(R"("unit":16,"count":1,"n":1001)")}},
      {"\"base\"", {noBase + '}', base + "\"}"}},
      {"\"base_zone\"", {R"({"unit":16,"count":1,"base":"2014-03-10T20:00:00Z","base_zone":"Mars/Olympus"})"}},
      {"\"zone\"", {base + R"(Z","zone":7})"}},
  };
  for (const auto& [about, lines] : cases) {
    for (const QByteArray& line : lines) {
      QByteArray answer = answerBatchLine(line);
      EXPECT_TRUE(answer.startsWith(R"({"error":")") && answer.replace("\\\"", "\"").contains(about))
          << answer.constData();
    }
  }
}

}  // namespace quillo
