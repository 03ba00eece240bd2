#pragma once

#include <time.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace quillo {

// The median seconds of the processor that one call of each contender takes, those of threads it uses included. They
// run by turns, so that what slows the machine down for a while slows all of them and their ratios stay true.
template <typename... Contenders>
std::array<double, sizeof...(Contenders)> secondsByTurns(Contenders&&... contenders) {
  constexpr size_t turns = 9;
  constexpr double secondsOfTurn = 0.01;
  std::array<std::array<double, turns>, sizeof...(Contenders)> taken{};
  const auto now = [] {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  const auto run = [&now](auto& contender) {
    // As many calls as fill a turn; the clock is read once in a batch that grows.
    size_t calls = 0;
    double seconds = 0;
    const double begin = now();
    for (size_t batch = 1; seconds < secondsOfTurn; batch *= 2) {
      for (size_t i = 0; i < batch; ++i) contender();
      calls += batch;
      seconds = now() - begin;
    }
    return seconds / static_cast<double>(calls);
  };
  for (size_t turn = 0; turn < turns; ++turn) {
    size_t index = 0;
    ((taken[index++][turn] = run(contenders)), ...);
  }
  std::array<double, sizeof...(Contenders)> medians{};
  for (size_t i = 0; i < medians.size(); ++i) {
    std::ranges::nth_element(taken[i], taken[i].begin() + turns / 2);
    medians[i] = taken[i][turns / 2];
  }
  return medians;
}

}  // namespace quillo
