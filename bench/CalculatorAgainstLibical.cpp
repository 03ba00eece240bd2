// One calculation of each family of steps against libical's recurrence iterator on the same rule and question. Time is
// that of ours. "jump" is how many times longer the iterator takes when it may start at the date asked about, "walk"
// when it starts at the rule's first date, as a plain use of it does. Walking through
// centuries takes seconds and is left out.

#include "LibicalRule.h"
#include "Ratio.h"

#include <benchmark/benchmark.h>

namespace quillo {

namespace {

void compare(benchmark::State& state, const Rule& rule) {
  const int baseYear = yearOfQuestion - static_cast<int>(state.range(0));
  const OwnRule own(rule, baseYear);
  const Date after = momentOfQuestion();
  const auto moment = static_cast<time_t>(after.timeIntervalSince1970());
  const auto ours = [&] { return own.firstAfter(after); };
  const LibicalRule theirs(rule, baseYear);
  if (!theirs.isUsable()) return state.SkipWithError("libical has no such zone or rule");

  const auto answer = ours();
  if (!answer) return state.SkipWithError("no reminder");
  const auto expected = static_cast<time_t>(answer->timeIntervalSince1970());
  const bool walks = state.range(0) <= 50;
  if (walks && theirs.firstAfter(moment, false) != expected) return state.SkipWithError("the two answers differ");
  // Over centuries its jumps by weeks go astray.
  if (theirs.firstAfter(moment, true) != expected) state.SetLabel("libical: another date");

  for (auto _ : state) benchmark::DoNotOptimize(ours());
  const auto [once, jump] = secondsByTurns([&] { benchmark::DoNotOptimize(ours()); },
                                           [&] { benchmark::DoNotOptimize(theirs.firstAfter(moment, true)); });
  state.counters["jump"] = jump / once;
  if (walks) {
    const auto [again, walk] = secondsByTurns([&] { benchmark::DoNotOptimize(ours()); },
                                              [&] { benchmark::DoNotOptimize(theirs.firstAfter(moment, false)); });
    state.counters["walk"] = walk / again;
  }
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
