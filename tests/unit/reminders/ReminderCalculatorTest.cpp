#include "reminders/DateComponentsQLAdditions.h"
#include "reminders/ReminderBatch.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"
#include "tests/support/TestHome.h"

#include <QByteArrayList>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct Case {
  QString name;
  QString zone;
  QString interval;
  QString after;
  QString expected;
};

void PrintTo(const Case& testCase, std::ostream* stream) {
  *stream << testCase.name.toStdString();
}

QList<Case> casesOfFile() {
  QFile file(QStringLiteral(QUILLO_TEST_DATA "/reminders.txt"));
  if (!file.open(QIODevice::ReadOnly)) return {};
  QList<Case> cases;
  for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
    QStringList f = line.split(u'|');
    if (line.startsWith(u'#') || f.size() != 5) continue;
    for (QString& field : f) field = field.trimmed();
    cases.append({f[0], f[1], f[2], f[3], f[4]});
  }
  return cases;
}

// "2014-03-10 21:00" or "2014-03-10 21:00:30" in the calendar's zone, or an instant.
std::optional<Date> dateOf(const QString& text, const Calendar& calendar) {
  if (text.endsWith(u'Z')) return Date::fromISO8601(text);
  const auto day = QDate::fromString(text.left(10), Qt::ISODate);
  const auto time = QTime::fromString(text.mid(11), Qt::ISODate);
  const qint64 hour = time.hour(), minute = time.minute(), second = time.second();
  return calendar.dateFromComponents({{}, day.year(), day.month(), day.day(), hour, minute, second, {}, {}, {}, {}});
}

quint64 unitOf(const QString& text) {
  for (quint64 unit = 1; unit != 0; unit <<= 1)
    if (const auto key = QLAdditions::keyForCalendarUnit(unit); key && text == *key) return unit;
  return text.toULongLong();
}

ReminderInterval intervalOf(const QString& text, const QString& zone) {
  const QStringList words = text.split(u' ');
  ReminderInterval interval;
  interval.setBaseCalendar(Calendar::withTimeZoneName(zone));
  for (const QString& word : words.mid(2)) {
    if (word.startsWith(u'P')) interval.setValidReminderPeriod(word.mid(1).toDouble());
    if (word.startsWith(u'@')) interval.setBaseCalendar(Calendar::withTimeZoneName(word.mid(1)));
    if (!word.contains(u'*')) continue;
    interval.setCalendarUnit(unitOf(word.section(u'*', 0, 0)));
    interval.setIntervalValue(word.section(u'*', 1).toULongLong());
  }
  interval.setBaseDate(dateOf(words.value(0) + u' ' + words.value(1), *interval.baseCalendar()));
  return interval;
}

std::string testName(const testing::TestParamInfo<Case>& info) {
  static const QRegularExpression others(u"[^A-Za-z0-9]"_s);
  return QString(info.param.name).replace(others, u"_"_s).toStdString();
}

}  // namespace

class ReminderCases : public testing::TestWithParam<Case> {};

TEST_P(ReminderCases, FirstReminder) {
  const auto calendar = Calendar::withTimeZoneName(GetParam().zone);
  ASSERT_TRUE(calendar);
  const ReminderInterval interval = intervalOf(GetParam().interval, GetParam().zone);
  const auto after = dateOf(GetParam().after, *calendar);
  ASSERT_TRUE(interval.baseDate() && after);
  const auto next = ReminderCalculator::firstReminderForInterval(interval, after, calendar);
  const auto text = [](std::optional<Date> date) { return date ? date->toISO8601() : u"none"_s; };
  EXPECT_EQ(text(next), GetParam().expected == "none"_L1 ? u"none"_s : text(dateOf(GetParam().expected, *calendar)));
}

INSTANTIATE_TEST_SUITE_P(File, ReminderCases, testing::ValuesIn(casesOfFile()), testName);

TEST(ReminderCalculator, SaysWhyThereIsNoReminder) {
  const Calendar berlin = *Calendar::withTimeZoneName(u"Europe/Berlin"_s);
  const Date after = *Date::fromISO8601(u"2014-03-20T21:30:00Z"_s);
  const auto lines = [&](const ReminderInterval& interval) {
    LogCapture log;
    EXPECT_EQ(ReminderCalculator::firstReminderForInterval(interval, after, berlin), std::nullopt);
    return log.takeLines();
  };
  const QString method = u"+[ReminderCalculator firstReminderForInterval:afterDate:calendar:] "_s;

  ReminderInterval interval = intervalOf(u"2014-03-10 21:00 day*0"_s, u"Europe/Berlin"_s);
  EXPECT_EQ(lines(interval),
            QStringList(method + u"Cannot calculate a reminder date with a zero interval "_s + interval.description()));

  interval.setIntervalValue(1);
  interval.setCalendarUnit(quint64{3});
  EXPECT_EQ(lines(interval),
            QStringList(method + u"Cannot calculate a reminder date with an unknown unit "_s + interval.description()));
  for (const double seconds : {double{NAN}, -HUGE_VAL, 1e300, -1e12}) {
    interval.setBaseDate(Date(seconds));
    EXPECT_EQ(lines(interval).size(), 1) << seconds;
  }
  interval.setBaseDate(std::nullopt);
  EXPECT_EQ(lines(interval).size(), 1);
  interval.setBaseDate(after);
  interval.setBaseCalendar(std::nullopt);
  EXPECT_EQ(lines(interval).size(), 1);
}

TEST(ReminderCalculator, WithoutADateAnswersAfterNow) {
  qputenv("TZ", "Asia/Kolkata");
  ReminderInterval interval = intervalOf(u"2014-03-10 00:00 minute*1"_s, u"Europe/Berlin"_s);
  const Date before = Date::now();
  const auto next = ReminderCalculator::firstReminderForInterval(interval);
  qunsetenv("TZ");
  ASSERT_TRUE(next);
  EXPECT_GT(*next, before);
  EXPECT_LT(next->timeIntervalSince(before), 65.0);
}

TEST(ReminderBatch, NamesWhatIsWrong) {
  const auto lineWith = [](const QByteArray& rest) {
    return R"({"base":"2014-03-10T20:00:00Z","base_zone":"Europe/Berlin","zone":"Europe/Berlin",)" + rest + "}";
  };
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
