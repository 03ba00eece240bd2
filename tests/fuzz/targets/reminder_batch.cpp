#include "FuzzTarget.h"
#include "foundation/Date.h"
#include "reminders/ReminderBatch.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace quillo;
using namespace Qt::StringLiterals;

// Every line gets one answer: reminders, each after the one before it, or an error.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const QByteArray text = answerBatchLine(inputBytes(data, size));
  require(!text.contains('\n'), "an answer is one line");
  const QJsonObject answer = QJsonDocument::fromJson(text).object();
  require(answer["next"_L1].isArray() != answer["error"_L1].isString(), "an answer has reminders or an error");
  std::optional<Date> before;
  for (const QJsonValue item : answer["next"_L1].toArray()) {
    const auto date = Date::fromISO8601(item.toString());
    require(date.has_value(), "a reminder is a date");
    // The text has whole seconds.
    require(!before || date->timeIntervalSince(*before) >= 0, "reminders come in order");
    before = date;
  }
  return 0;
}
