#include "reminders/ReminderBatch.h"

#include <QByteArrayList>

#include <gtest/gtest.h>

namespace quillo {

namespace {

QByteArray lineWith(const QByteArray& rest) {
  return R"({"base":"2014-03-10T20:00:00Z","base_zone":"Europe/Berlin","zone":"Europe/Berlin",)" + rest + "}";
}

}  // namespace

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
