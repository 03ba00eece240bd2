#pragma once

#include "qlcore/services/QLLocationManager.h"
#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>

namespace quillo {

struct Call {
  std::shared_ptr<const QLLocation> location;
  bool isFinal;
  double accuracy;
};

inline void startSearch(QLLocationManager& manager, double seconds, std::vector<Call>& calls) {
  manager.startWithTimeout(seconds, [&](const auto& location, bool isFinal) {
    calls.push_back({location, isFinal, manager.horzAccuracy()});
  });
}

// All that a search hands over; the last call alone is final.
inline std::vector<Call> callsOfSearch(QLLocationManager& manager, double seconds) {
  std::vector<Call> calls;
  startSearch(manager, seconds, calls);
  EXPECT_TRUE(calls.empty()) << "called back from inside the start";
  EXPECT_TRUE(runUntil([&manager] { return !manager.isSearching(); }));
  manager.stop();
  for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i].isFinal, i + 1 == calls.size());
  return calls;
}

}  // namespace quillo
