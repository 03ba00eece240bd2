#pragma once

#include <QDate>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace quillo {

class JournalSearch;
class StatePage;
struct IndexedDamage;

struct MissingJournalActions {
  std::function<void()> setUp;
  std::function<void()> create;
  std::function<void()> choose;
  std::function<void()> tryAgain;
};

// Says on the page that no journal is configured, or why the one that is cannot be reached where there is a `problem`.
void showMissingJournal(StatePage& page, const std::optional<QString>& problem, const MissingJournalActions& actions);

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
