// When the next reminder is, by us and by libical, for rules that began ten years before.
#include "../LibicalRule.h"
#include "Contenders.h"

#include <cstdlib>
#include <iostream>
#include <memory>

namespace quillo {

void addReminders(Contenders& contenders) {
  const Date after = momentOfQuestion();
  const auto moment = static_cast<time_t>(after.timeIntervalSince1970());
  for (const Rule& rule : rules) {
    const auto ours = std::make_shared<OwnRule>(rule, yearOfQuestion - 10);
    const auto theirs = std::make_shared<LibicalRule>(rule, yearOfQuestion - 10);
    const auto answer = ours->firstAfter(after);
    const time_t expected = answer ? static_cast<time_t>(answer->timeIntervalSince1970()) : 0;
    for (const bool jump : {false, true})
      if (!theirs->isUsable() || theirs->firstAfter(moment, jump) != expected) {
        std::cerr << "bench_contenders: libical and we differ about " << rule.name << '\n';
        std::exit(1);
      }
    const std::string name = std::string("reminder/") + rule.name;
    contenders[name + "/ours"] = [=] { static_cast<void>(ours->firstAfter(after)); };
    contenders[name + "/libical, jumping"] = [=] { static_cast<void>(theirs->firstAfter(moment, true)); };
    contenders[name + "/libical, walking"] = [=] { static_cast<void>(theirs->firstAfter(moment, false)); };
    // For those who work elsewhere on the same question.
    std::cout << "rule " << rule.name << ' ' << rule.recurrence << ' ' << moment << ' ' << expected << '\n';
  }
}

}  // namespace quillo
