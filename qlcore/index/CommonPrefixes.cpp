#include "qlcore/index/CommonPrefixes.h"

#include "qlcore/index/SearchWords.h"

#include <QSet>

#include <algorithm>

namespace quillo {

namespace {

// Single letters are marked in any case, and longer beginnings are as rare as words are.
constexpr qsizetype shortest = 2;
constexpr qsizetype longest = 8;
// Of one in so many entries.
constexpr int commonFrom = 4;
constexpr qsizetype mostPrefixes = 150;

}  // namespace

CommonPrefixes::CommonPrefixes(const QStringList& prefixes) : m_prefixes(prefixes) {
  for (qsizetype i = 0; i < prefixes.size(); ++i) m_numbers.insert(prefixes[i], i);
}

CommonPrefixes CommonPrefixes::ofSample(const QStringList& texts) {
  QHash<QString, int> counts;
  for (const QString& text : texts) {
    QSet<QString> ofText;
    SearchWords words(text);
    while (words.next())
      for (qsizetype length = shortest; !words.isCharacter() && length <= std::min(longest, words.folded().size());
           ++length)
        ofText.insert(words.folded().first(length).toString());
    for (const QString& prefix : ofText) ++counts[prefix];
  }
  QStringList common;
  for (auto count = counts.cbegin(); count != counts.cend(); ++count)
    if (count.value() * commonFrom >= texts.size() && count.value() > 1) common << count.key();
  std::sort(common.begin(), common.end(),
            [&](const QString& a, const QString& b) { return counts[a] != counts[b] ? counts[a] > counts[b] : a < b; });
  return CommonPrefixes(common.first(std::min(common.size(), mostPrefixes)));
}

void CommonPrefixes::find(QStringView word, std::vector<bool>& isFound) const {
  if (m_prefixes.isEmpty()) return;
  for (qsizetype length = shortest; length <= std::min(longest, word.size()); ++length) {
    const auto number = m_numbers.constFind(QString::fromRawData(word.data(), length));
    // What has a common beginning may be rare; what has a rare one cannot be common.
    if (number == m_numbers.constEnd()) return;
    isFound[static_cast<size_t>(*number)] = true;
  }
}

}  // namespace quillo
