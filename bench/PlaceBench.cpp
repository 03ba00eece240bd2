// How long a look-up of a place takes in the table's tree, against a look at every place. The counter "ratio" of the
// comparison is the one divided by the other, measured by turns in the same run.

#include "qlcore/services/PlaceTable.h"

#include <QFile>

#include <benchmark/benchmark.h>

#include <chrono>
#include <limits>
#include <optional>
#include <random>
#include <vector>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

using Spot = PlaceTable::Point;

// Half where people live close together, half anywhere on the earth.
std::vector<Spot> spots() {
  std::mt19937 random(20140310);
  std::uniform_real_distribution<double> european(47, 53), eastward(2, 14), north(-90, 90), east(-180, 180);
  std::vector<Spot> made;
  for (int i = 0; i < 1000; ++i)
    made.push_back(*(i % 2 ? PlaceTable::pointAt(european(random), eastward(random))
                           : PlaceTable::pointAt(north(random), east(random))));
  return made;
}

std::optional<size_t> lookAtEveryPlace(const PlaceTable& table, const Spot& spot) {
  std::optional<size_t> nearest;
  double best = std::numeric_limits<double>::infinity();
  for (size_t i = 0; i < table.count(); ++i) {
    const auto weighed = table.weighedDistance(i, spot);
    if (!weighed || *weighed >= best) continue;
    nearest = i;
    best = *weighed;
  }
  return nearest;
}

void lookUpPlace(benchmark::State& state) {
  const PlaceTable& table = PlaceTable::shared();
  const auto where = spots();
  size_t next = 0;
  for (auto _ : state) {
    const Spot& spot = where[next++ % where.size()];
    benchmark::DoNotOptimize(table.indexOfPlaceNear(spot));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(lookUpPlace)->Unit(benchmark::kMicrosecond);

void compareWithLookAtEveryPlace(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  const PlaceTable& table = PlaceTable::shared();
  const auto where = spots();
  size_t next = 0;
  std::chrono::duration<double> byTree{}, byLook{};
  for (auto _ : state) {
    const Spot& spot = where[next++ % where.size()];
    const auto start = Clock::now();
    const auto found = table.indexOfPlaceNear(spot);
    const auto between = Clock::now();
    const auto seen = lookAtEveryPlace(table, spot);
    byLook += Clock::now() - between;
    byTree += between - start;
    if (found != seen) return state.SkipWithError("the two do not agree");
  }
  state.counters["ratio"] = byLook / byTree;
}
BENCHMARK(compareWithLookAtEveryPlace)->Unit(benchmark::kMicrosecond);

// What the first look-up of the process pays.
void loadTable(benchmark::State& state) {
  QFile file(u":/quillo/places/places.bin"_s);
  if (!file.open(QIODevice::ReadOnly)) return state.SkipWithError("no table");
  const QByteArray bytes = file.readAll();
  for (auto _ : state) benchmark::DoNotOptimize(PlaceTable::fromBytes(bytes));
}
BENCHMARK(loadTable)->Unit(benchmark::kMillisecond);

}  // namespace
