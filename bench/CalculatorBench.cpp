#include "reminders/ReminderBatch.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"

#include <benchmark/benchmark.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

ReminderInterval interval(CalendarUnit unit, const QString& base) {
  ReminderInterval result;
  result.setCalendarUnit(unit);
  result.setIntervalValue(1);
  result.setBaseDate(Date::fromISO8601(base));
  result.setBaseCalendar(Calendar::withTimeZoneName(u"Europe/Berlin"_s));
  return result;
}

void step(benchmark::State& state, CalendarUnit unit, const QString& base, const QString& after) {
  const ReminderInterval steps = interval(unit, base);
  const Calendar calendar = *Calendar::withTimeZoneName(u"America/New_York"_s);
  const auto moment = Date::fromISO8601(after);
  for (auto _ : state) benchmark::DoNotOptimize(ReminderCalculator::firstReminderForInterval(steps, moment, calendar));
}

void dayStep(benchmark::State& state) {
  step(state, CalendarUnit::Day, u"2014-03-10T20:00:00Z"_s, u"2026-03-20T21:30:00Z"_s);
}
void oldMonthStep(benchmark::State& state) {
  step(state, CalendarUnit::Month, u"0001-01-31T20:00:00Z"_s, u"2026-03-20T21:30:00Z"_s);
}
void minuteStep(benchmark::State& state) {
  step(state, CalendarUnit::Minute, u"2014-03-10T20:00:00Z"_s, u"2026-03-20T21:30:00Z"_s);
}
void farDayStep(benchmark::State& state) {
  step(state, CalendarUnit::Day, u"2014-03-10T20:00:00Z"_s, u"9990-03-20T21:30:00Z"_s);
}

void currentCalendar(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Calendar::currentCalendar());
}

// A line of the batch command, with as many reminders as the argument says.
void batchLine(benchmark::State& state) {
  const QByteArray line =
      R"({"unit":16,"count":1,"base":"2014-03-10T20:00:00Z","base_zone":"Europe/Berlin","period":0,)"
      R"("after":"2014-03-20T21:30:00Z","zone":"Europe/Berlin","n":)" +
      QByteArray::number(qlonglong{state.range(0)}) + "}";
  for (auto _ : state) benchmark::DoNotOptimize(answerBatchLine(line));
}

}  // namespace

BENCHMARK(dayStep);
BENCHMARK(oldMonthStep);
BENCHMARK(minuteStep);
BENCHMARK(farDayStep);
BENCHMARK(currentCalendar);
BENCHMARK(batchLine)->Arg(1)->Arg(3)->Arg(1000);

}  // namespace quillo
