// Measures one call of a contender at a time, so that bench/compare can let contenders of several programs take turns.
//   bench_contenders DIRECTORY
// For each line with a name that is read, one with the seconds of the processor that a call of it takes, or "unknown".
#include "../Ratio.h"
#include "Contenders.h"

#include <malloc.h>

#include <iostream>
#include <string>

namespace {

constexpr double secondsOfTurn = 0.02;

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
    // Or each would work in what is left of the heap that the one before has cut up.
    ::malloc_trim(0);
    if (found == contenders.end())
      std::cout << "unknown" << std::endl;
    else
      std::cout << quillo::secondsOfCall(found->second, secondsOfTurn) << std::endl;
  }
  return 0;
}
