#pragma once

#include <time.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace quillo {

inline double processorSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// The seconds of the processor that one call takes, those of threads it uses included: of as many calls as fill the
// turn. The clock is read once in a batch that grows.
template <typename Contender>
double secondsOfCall(Contender&& contender, double secondsOfTurn) {
  size_t calls = 0;
  double seconds = 0;
  const double begin = processorSeconds();
  for (size_t batch = 1; seconds < secondsOfTurn; batch *= 2) {
    for (size_t i = 0; i < batch; ++i) contender();
    calls += batch;
    seconds = processorSeconds() - begin;
  }
  return seconds / static_cast<double>(calls);
}

// The median for each contender. They run by turns, so that what slows the machine down for a while slows all of them
// and their ratios stay true.
template <typename... Contenders>
std::array<double, sizeof...(Contenders)> secondsByTurns(Contenders&&... contenders) {
  constexpr size_t turns = 9;
  constexpr double secondsOfTurn = 0.01;
  std::array<std::array<double, turns>, sizeof...(Contenders)> taken{};
  for (size_t turn = 0; turn < turns; ++turn) {
    size_t index = 0;
    ((taken[index++][turn] = secondsOfCall(contenders, secondsOfTurn)), ...);
  }
  std::array<double, sizeof...(Contenders)> medians{};
  for (size_t i = 0; i < medians.size(); ++i) {
    std::ranges::nth_element(taken[i], taken[i].begin() + turns / 2);
    medians[i] = taken[i][turns / 2];
  }
  return medians;
}

}  // namespace quillo
