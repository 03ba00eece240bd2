#include "reminders/ReminderBatch.h"

#include "foundation/Calendar.h"
#include "foundation/Date.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <limits>
#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostReminders = 1000;

QByteArray compact(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Reads the members of one line and keeps the first thing that is wrong with them.
class LineReader {
 public:
  explicit LineReader(const QJsonObject& object) : m_object(object) {}

  [[nodiscard]] const QString& error() const { return m_error; }

  // A whole number of 64 bits. JSON numbers beyond 2^63 are real: 2^64 - 1 comes as 2^64 and means the largest.
  quint64 unsignedNumber(QLatin1StringView key) {
    const QJsonValue value = m_object.value(key);
    const double real = value.toDouble(-1);
    if (!value.isDouble() || real < 0 || real > 18446744073709551616.0 || real != std::floor(real)) {
      wrong(key, "is not a whole number of 64 bits"_L1);
      return 0;
    }
    if (real >= 18446744073709551616.0) return std::numeric_limits<quint64>::max();
    // Exact below 2^63, where the value is held as an integer.
    const qint64 exact = value.toInteger(-1);
    return exact >= 0 ? static_cast<quint64>(exact) : static_cast<quint64>(real);
  }

  double number(QLatin1StringView key) {
    const QJsonValue value = m_object.value(key);
    if (!value.isUndefined() && !value.isDouble()) wrong(key, "is not a number"_L1);
    return value.toDouble(0);
  }

  std::optional<Date> optionalDate(QLatin1StringView key) {
    const QJsonValue value = m_object.value(key);
    if (value.isUndefined() || value.isNull()) return std::nullopt;
    const auto date = Date::fromISO8601(value.toString());
    if (!date) wrong(key, "is not an ISO 8601 date with a zone"_L1);
    return date;
  }

  std::optional<Date> date(QLatin1StringView key) {
    const auto read = optionalDate(key);
    if (!read) wrong(key, "is missing"_L1);
    return read;
  }

  std::optional<Calendar> calendar(QLatin1StringView key) {
    const auto read = Calendar::withTimeZoneName(m_object.value(key).toString());
    if (!read) wrong(key, "is not the name of a time zone"_L1);
    return read;
  }

  int howMany() {
    const QJsonValue value = m_object.value("n"_L1);
    if (value.isUndefined()) return 1;
    const int n = value.toInt(0);
    if (n < 1 || n > mostReminders) wrong("n"_L1, "is not between 1 and 1000"_L1);
    return n;
  }

  [[nodiscard]] bool has(QLatin1StringView key) const { return m_object.contains(key); }

 private:
  void wrong(QLatin1StringView key, QLatin1StringView what) {
    if (m_error.isEmpty()) m_error = u"\"%1\" %2"_s.arg(key, what);
  }

  const QJsonObject& m_object;
  QString m_error;
};

}  // namespace

QByteArray answerBatchLine(const QByteArray& jsonLine) {
  QJsonParseError parseError;
  const QJsonDocument document = QJsonDocument::fromJson(jsonLine, &parseError);
  if (parseError.error != QJsonParseError::NoError)
    return compact({{u"error"_s, u"not JSON: "_s + parseError.errorString()}});
  if (!document.isObject()) return compact({{u"error"_s, u"not a JSON object"_s}});

  const QJsonObject object = document.object();
  LineReader line(object);
  ReminderInterval interval;
  interval.setCalendarUnit(line.unsignedNumber("unit"_L1));
  interval.setIntervalValue(line.unsignedNumber("count"_L1));
  interval.setBaseDate(line.date("base"_L1));
  interval.setBaseCalendar(line.calendar("base_zone"_L1));
  interval.setValidReminderPeriod(line.number("period"_L1));
  std::optional<Date> after = line.optionalDate("after"_L1);
  const Calendar calendar =
      line.has("zone"_L1) ? line.calendar("zone"_L1).value_or(Calendar(TimeZone::utc())) : Calendar::currentCalendar();
  const int wanted = line.howMany();
  if (!line.error().isEmpty()) return compact({{u"error"_s, line.error()}});

  QJsonArray next;
  for (int i = 0; i < wanted; ++i) {
    after = ReminderCalculator::firstReminderForInterval(interval, after, calendar);
    if (!after) break;
    next.append(after->toISO8601());
  }
  return compact({{u"next"_s, next}});
}

}  // namespace quillo
