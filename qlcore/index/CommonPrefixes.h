#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <vector>

namespace quillo {

// Beginnings of words that very many entries have. The full-text table finds all words that begin with some letters by
// going through each of them, which takes long for these; so an entry is marked with those that its words have. Which
// they are is settled when an index is made, from a sample of the journal's entries, and stays so: they make no
// difference to what is found.
class CommonPrefixes {
 public:
  CommonPrefixes() = default;
  explicit CommonPrefixes(const QStringList& prefixes);

  // Those of the words of `texts`, each of them a sample of an entry.
  [[nodiscard]] static CommonPrefixes ofSample(const QStringList& texts);

  [[nodiscard]] const QStringList& all() const { return m_prefixes; }
  [[nodiscard]] bool contains(const QString& prefix) const { return m_numbers.contains(prefix); }

  // Notes in `isFound`, which has a place for each of all(), those that `word` begins with.
  void find(QStringView word, std::vector<bool>& isFound) const;

 private:
  QStringList m_prefixes;
  QHash<QString, qsizetype> m_numbers;
};

}  // namespace quillo
