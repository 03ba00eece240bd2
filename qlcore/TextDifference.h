#pragma once

#include "foundation/TextRange.h"

#include <QList>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <vector>

// Where two texts differ, paragraph by paragraph and word by word.
namespace quillo::TextDifference {

// The parts of a text, side by side; views into it.
using Tokens = std::vector<QStringView>;

// Paragraphs, each with its line break.
[[nodiscard]] Tokens paragraphs(QStringView text);
// Words, stretches of spaces, and every other character by itself.
[[nodiscard]] Tokens words(QStringView text);
// A surrogate pair counts as a word's.
[[nodiscard]] bool isWordPart(QChar c);
// Of the tokens from `begin` to before `end`.
[[nodiscard]] QStringView textOf(const Tokens& tokens, size_t begin, size_t end);

// A stretch of the base, and what stands in its place.
struct Change {
  size_t baseBegin, baseEnd;
  size_t begin, end;
};

// The fewest changes that make `other` of `base`, in their order. Takes time in proportion to the texts and the square
// of how much they differ, which is bounded: what differs in more counts as different all through.
[[nodiscard]] std::vector<Change> changes(const Tokens& base, const Tokens& other);

struct Ranges {
  QList<TextRange> first;
  QList<TextRange> second;

  bool operator==(const Ranges&) const = default;
};

// What each of the two has that the other has not, by words inside of paragraphs that differ; in ascending order, and
// with what is between where that is nothing but spaces.
[[nodiscard]] Ranges differentWords(const QString& first, const QString& second);

}  // namespace quillo::TextDifference
