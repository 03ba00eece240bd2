#pragma once

#include <QDate>
#include <QList>

#include <functional>
#include <optional>

namespace quillo {

class JournalSearch;
class StatePage;
struct IndexedDamage;

struct EmptyListActions {
  // On a day, or now.
  std::function<void(std::optional<QDate>)> beginEntry;
  std::function<void(qsizetype index)> removeFilter;
  std::function<void()> showAll;
};

// Says on the page why the list is empty, and offers what leads on.
void showEmptyList(StatePage& page, const JournalSearch& search, const EmptyListActions& actions);

// Says which entries cannot be read, and why.
void showDamagedEntries(StatePage& page, const QList<IndexedDamage>& damaged, std::function<void()> showFiles);

}  // namespace quillo
