#include "exchange/backup/BackupThinning.h"

#include <QSet>

#include <algorithm>
#include <numeric>
#include <utility>

namespace quillo {

namespace {

using Period = std::pair<int, int>;

Period dayOf(const QDate& date) {
  return {date.year(), date.dayOfYear()};
}
Period weekOf(const QDate& date) {
  int year = 0;
  const int week = date.weekNumber(&year);
  return {year, week};
}
Period monthOf(const QDate& date) {
  return {date.year(), date.month()};
}

}  // namespace

QList<qsizetype> superfluousBackups(const QList<QDateTime>& begun, qsizetype whole, const ThinningRule& rule) {
  if (rule.most <= 0) return {};
  QList<qsizetype> newestFirst(begun.size());
  std::iota(newestFirst.begin(), newestFirst.end(), 0);
  std::stable_sort(newestFirst.begin(), newestFirst.end(),
                   [&begun](qsizetype a, qsizetype b) { return begun[a] > begun[b]; });

  QSet<qsizetype> kept{whole};
  for (const qsizetype index : newestFirst.first(std::clamp<qsizetype>(rule.newest, 0, newestFirst.size())))
    kept.insert(index);
  const auto keepLastOfEach = [&](Period (*periodOf)(const QDate&), qsizetype most) {
    QSet<Period> seen;
    for (const qsizetype index : newestFirst) {
      const Period period = periodOf(begun[index].date());
      if (seen.contains(period)) continue;
      if (seen.size() >= most) return;
      seen.insert(period);
      kept.insert(index);
    }
  };
  keepLastOfEach(dayOf, rule.days);
  keepLastOfEach(weekOf, rule.weeks);
  keepLastOfEach(monthOf, begun.size());

  QList<qsizetype> superfluous;
  // The one that is whole has its place among the most that stay, wherever it stands.
  int places = rule.most - 1;
  for (const qsizetype index : newestFirst) {
    if (index == whole) continue;
    if (!kept.contains(index) || places-- <= 0) superfluous << index;
  }
  std::sort(superfluous.begin(), superfluous.end());
  return superfluous;
}

}  // namespace quillo
