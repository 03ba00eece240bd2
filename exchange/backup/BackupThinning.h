#pragma once

#include <QDateTime>
#include <QList>

namespace quillo {

// Which backups stay when they become many: the newest ones whatever their age, of older ones the last of each of some
// days, of some weeks, and of every month; and of these no more than `most`, the oldest going first. Days, weeks and
// months in which there is no backup do not count: who was away for a month finds everything as it was.
struct ThinningRule {
  int newest{5};
  int days{14};
  int weeks{8};
  int most{40};  // 0 or less: all stay
};

// The indexes, rising, of those to be removed. `begun` are the times of backups by the clock of the person, in any
// order; `whole` is the index of one that is known to be whole, which always stays.
[[nodiscard]] QList<qsizetype> superfluousBackups(const QList<QDateTime>& begun, qsizetype whole,
                                                  const ThinningRule& rule);

}  // namespace quillo
