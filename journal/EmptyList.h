#pragma once

#include <QDate>

#include <functional>
#include <optional>

namespace quillo {

class JournalSearch;
class StatePage;

struct EmptyListActions {
  // On a day, or now.
  std::function<void(std::optional<QDate>)> beginEntry;
  std::function<void(qsizetype index)> removeFilter;
  std::function<void()> showAll;
};

// Says on the page why the list is empty, and offers what leads on.
void showEmptyList(StatePage& page, const JournalSearch& search, const EmptyListActions& actions);

}  // namespace quillo
