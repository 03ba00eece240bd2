#include "FuzzTarget.h"
#include "foundation/Date.h"
#include "reminders/ReminderBatch.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cstring>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// Bytes that are no text stand for a line whose members are all of the right kind: what would take a fuzzer long to
// write in JSON, while the arithmetic behind it is what can go wrong.
struct Packed {
  quint64 unit, count;
  qint64 base, after;  // seconds since 1970
  double period;
  quint8 baseZone, zone, howMany, form;
};

constexpr std::array zones{"UTC"_L1,
                           "Europe/Berlin"_L1,
                           "America/New_York"_L1,
                           "Africa/Cairo"_L1,
                           "Pacific/Apia"_L1,
                           "Australia/Lord_Howe"_L1,
                           "Asia/Kathmandu"_L1,
                           "America/Nuuk"_L1,
                           "Africa/Monrovia"_L1,
                           "Antarctica/Troll"_L1};
// Years to seconds, weeks, weekdays, and one that is no unit.
constexpr std::array<quint64, 9> units{4, 8, 16, 32, 64, 128, 256, 512, 1};
// From before year 1 to beyond 9999, about which the text of a date says no more.
constexpr qint64 longestTime = 400'000'000'000;

QByteArray lineOf(const uint8_t* data) {
  Packed packed;
  std::memcpy(&packed, data, sizeof packed);
  const auto text = [](qint64 seconds) {
    return Date::since1970(static_cast<double>(seconds % longestTime)).toISO8601();
  };
  const bool isOrdinary = packed.form & 1;
  const qint64 soonAfter = packed.base % longestTime + packed.after % 100'000'000;
  QJsonObject line{{u"base"_s, text(packed.base)},
                   {u"after"_s, text(packed.form & 2 ? soonAfter : packed.after)},
                   {u"base_zone"_s, zones[packed.baseZone % zones.size()]},
                   {u"zone"_s, zones[packed.zone % zones.size()]},
                   {u"period"_s, packed.form & 4 ? double(qint64(packed.unit >> 32)) : packed.period},
                   {u"n"_s, 1 + packed.howMany}};
  line[u"unit"_s] = static_cast<qint64>(isOrdinary ? units[packed.unit % units.size()] : packed.unit >> 1);
  line[u"count"_s] = static_cast<qint64>(isOrdinary ? packed.count % 1000 : packed.count >> 1);
  return QJsonDocument(line).toJson(QJsonDocument::Compact);
}

}  // namespace

// Every line gets one answer: reminders, each after the one before it, or an error.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const bool isPacked = size >= sizeof(Packed) && data[0] != '{';
  const QByteArray line = isPacked ? lineOf(data) : inputBytes(data, size);
  const QByteArray text = answerBatchLine(line);
  require(!text.contains('\n'), "an answer is one line");
  const QJsonObject answer = QJsonDocument::fromJson(text).object();
  require(answer["next"_L1].isArray() != answer["error"_L1].isString(), "an answer has reminders or an error");
  std::optional<Date> before = Date::fromISO8601(QJsonDocument::fromJson(line).object()["after"_L1].toString());
  for (const QJsonValue item : answer["next"_L1].toArray()) {
    const auto date = Date::fromISO8601(item.toString());
    require(date.has_value(), "a reminder is a date");
    // The text has whole seconds.
    require(!before || date->timeIntervalSince(*before) > -1, "reminders come in order");
    before = date;
  }
  return 0;
}
