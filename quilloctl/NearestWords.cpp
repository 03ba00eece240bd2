#include "quilloctl/NearestWords.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace quillo::ctl {

namespace {

// How many letters have to be put in, taken out or changed to make one word of the other.
qsizetype distance(const QString& a, const QString& b) {
  std::vector<qsizetype> row(static_cast<size_t>(b.size()) + 1);
  std::iota(row.begin(), row.end(), 0);
  for (const QChar letter : a) {
    qsizetype diagonal = std::exchange(row[0], row[0] + 1);
    for (size_t i = 1; i < row.size(); ++i) {
      const qsizetype changed = diagonal + (letter == b[static_cast<qsizetype>(i) - 1] ? 0 : 1);
      diagonal = row[i];
      row[i] = std::min({row[i - 1] + 1, row[i] + 1, changed});
    }
  }
  return row.back();
}

}  // namespace

QStringList nearestWords(const QString& word, const QStringList& known) {
  // Far from every name, and long to compare.
  constexpr qsizetype longestWord = 64;
  if (word.size() > longestWord) return {};
  const QString wanted = word.toLower();
  std::vector<std::pair<qsizetype, QString>> found;
  for (const QString& name : known) {
    const QString folded = name.toLower();
    const qsizetype far = distance(wanted, folded);
    const bool isPart = wanted.size() > 2 && folded.contains(wanted);
    if (isPart || far <= std::max<qsizetype>(2, folded.size() / 3)) found.emplace_back(far, name);
  }
  std::ranges::sort(found);
  QStringList names;
  for (const auto& candidate : found) names << candidate.second;
  return names;
}

}  // namespace quillo::ctl
