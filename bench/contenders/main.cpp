// Measures one call of a contender at a time, so that bench/compare can let contenders of several programs take turns.
//   bench_contenders DIRECTORY
// For each line with a name that is read, one with the seconds of the processor that a call of it takes, or "unknown".
#include "Contenders.h"

#include <time.h>

#include <cstddef>
#include <iostream>
#include <string>

namespace {

constexpr double secondsOfTurn = 0.02;

double processorSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// As many calls as fill a turn; the clock is read once in a batch that grows.
double secondsOfCall(const std::function<void()>& contender) {
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

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  quillo::Contenders contenders;
  quillo::addLists(contenders, argv[1]);
  quillo::addReminders(contenders);
  quillo::addSettings(contenders, argv[1]);
  std::cout << "ready" << std::endl;
  std::string name;
  while (std::getline(std::cin, name)) {
    const auto found = contenders.find(name);
    if (found == contenders.end())
      std::cout << "unknown" << std::endl;
    else
      std::cout << secondsOfCall(found->second) << std::endl;
  }
  return 0;
}
