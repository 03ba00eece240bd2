#pragma once

#include <QList>
#include <QString>

namespace quillo {

// In UTF-16 units of the text.
struct WordMatch {
  qsizetype start{0};
  qsizetype length{0};
  bool operator==(const WordMatch&) const = default;
};

// Where words of `text` begin with one of `words`, in the order of the text and apart from each other; without regard
// to case and accents. A word that was searched for may hold blanks and is then found as it stands.
[[nodiscard]] QList<WordMatch> wordMatches(const QString& text, const QStringList& words);

}  // namespace quillo
