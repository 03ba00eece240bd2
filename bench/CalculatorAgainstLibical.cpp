// One calculation of each family of steps against libical's recurrence iterator on the same rule and question. Time is
// that of ours. "jump" is how many times longer the iterator takes when it may start at the date asked about, "walk"
// when it starts at the rule's first date, as a plain use of it does. "calls" and "lookups" count what ours asks of the
// calendar and of the zone's rules; they do not grow with the age of the base date. Walking through centuries takes
// seconds and is left out.

#include "Ratio.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"
#include "tests/support/CalendarCallCounter.h"

#include <benchmark/benchmark.h>

#include <libical/ical.h>

#include <string>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct Rule {
  const char* name;
  CalendarUnit unit;
  quint64 count;
  double period;  // seconds
  const char* recurrence;
};

// Each begins at 09:00 on 10 March and is asked at 10:05 on 20 March 2026, in Berlin.
constexpr Rule rules[] = {
    {"day", CalendarUnit::Day, 1, 0, "FREQ=DAILY"},
    {"two_weeks", CalendarUnit::Week, 2, 0, "FREQ=WEEKLY;INTERVAL=2"},
    {"month", CalendarUnit::Month, 1, 0, "FREQ=MONTHLY"},
    {"quarter", CalendarUnit::Quarter, 1, 0, "FREQ=MONTHLY;INTERVAL=3"},
    {"year", CalendarUnit::Year, 1, 0, "FREQ=YEARLY"},
    {"three_hours_in_window", CalendarUnit::Hour, 3, 28800, "FREQ=DAILY;BYHOUR=9,12,15"},
    {"twenty_minutes_in_window", CalendarUnit::Minute, 20, 27600,
     "FREQ=DAILY;BYHOUR=9,10,11,12,13,14,15,16;BYMINUTE=0,20,40"},
};
constexpr int yearOfQuestion = 2026;

class LibicalRule {
 public:
  LibicalRule(const Rule& rule, int baseYear) {
    icaltimezone_set_tzid_prefix("");
    m_zone = icaltimezone_get_builtin_timezone("Europe/Berlin");
    m_rule = icalrecurrencetype_from_string(rule.recurrence);
    m_base = icaltime_from_string((std::to_string(baseYear) + "0310T090000").c_str());
  }
  [[nodiscard]] bool isUsable() const { return m_zone && m_rule.freq != ICAL_NO_RECURRENCE; }

  // 0 where the iterator gives up.
  [[nodiscard]] time_t firstAfter(time_t moment, bool jump) const {
    const icaltimetype after = icaltime_from_timet_with_zone(moment, 0, m_zone);
    icalrecur_iterator* iterator = icalrecur_iterator_new(m_rule, m_base);
    if (!iterator) return 0;
    if (jump) icalrecur_iterator_set_start(iterator, after);
    // Ends: the rules have no end, and each turn leads to a later date.
    icaltimetype next = icalrecur_iterator_next(iterator);
    while (!icaltime_is_null_time(next) && icaltime_compare(next, after) <= 0) next = icalrecur_iterator_next(iterator);
    icalrecur_iterator_free(iterator);
    return icaltime_is_null_time(next) ? 0 : icaltime_as_timet_with_zone(next, m_zone);
  }

 private:
  icaltimezone* m_zone{nullptr};
  icalrecurrencetype m_rule;
  icaltimetype m_base;
};

void compare(benchmark::State& state, const Rule& rule) {
  const int baseYear = yearOfQuestion - static_cast<int>(state.range(0));
  const Calendar berlin = *Calendar::withTimeZoneName(u"Europe/Berlin"_s);
  ReminderInterval interval;
  interval.setCalendarUnit(rule.unit);
  interval.setIntervalValue(rule.count);
  interval.setValidReminderPeriod(rule.period);
  interval.setBaseCalendar(berlin);
  DateComponents base;
  base.year = baseYear;
  base.month = 3;
  base.day = 10;
  base.hour = 9;
  interval.setBaseDate(berlin.dateFromComponents(base));
  const Date after = *Date::fromISO8601(u"%1-03-20T09:05:00Z"_s.arg(yearOfQuestion));
  const auto moment = static_cast<time_t>(after.timeIntervalSince1970());
  const auto ours = [&] { return ReminderCalculator::firstReminderForInterval(interval, after, berlin); };
  const LibicalRule theirs(rule, baseYear);
  if (!theirs.isUsable()) return state.SkipWithError("libical has no such zone or rule");

  static_cast<void>(takeCalendarCalls());
  const auto answer = ours();
  const CalendarCalls calls = takeCalendarCalls();
  if (!answer) return state.SkipWithError("no reminder");
  const auto expected = static_cast<time_t>(answer->timeIntervalSince1970());
  const bool walks = state.range(0) <= 50;
  if (walks && theirs.firstAfter(moment, false) != expected) return state.SkipWithError("the two answers differ");
  // Over centuries its jumps by weeks go astray.
  if (theirs.firstAfter(moment, true) != expected) state.SetLabel("libical: another date");

  for (auto _ : state) benchmark::DoNotOptimize(ours());
  const auto [own, jump] = secondsByTurns([&] { benchmark::DoNotOptimize(ours()); },
                                          [&] { benchmark::DoNotOptimize(theirs.firstAfter(moment, true)); });
  state.counters["jump"] = jump / own;
  if (walks) {
    const auto [again, walk] = secondsByTurns([&] { benchmark::DoNotOptimize(ours()); },
                                              [&] { benchmark::DoNotOptimize(theirs.firstAfter(moment, false)); });
    state.counters["walk"] = walk / again;
  }
  state.counters["calls"] = calls.calendar;
  state.counters["lookups"] = calls.zone;
}

const bool registered = [] {
  for (const Rule& rule : rules)
    benchmark::RegisterBenchmark(rule.name, [&rule](benchmark::State& state) { compare(state, rule); })
        ->ArgName("years")
        ->Arg(1)
        ->Arg(10)
        ->Arg(50)
        ->Arg(500)
        ->Iterations(20000);
  return true;
}();

}  // namespace
}  // namespace quillo
