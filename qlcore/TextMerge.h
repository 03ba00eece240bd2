#pragma once

#include <QString>

namespace quillo {

// What became of a text that two writers changed, each from the same text.
struct MergedText {
  QString text;
  // Both wrote different things in place of the same words. The text then has the paragraph twice, first `theirs`, so
  // that no word of either is lost.
  bool hasClash{false};

  bool operator==(const MergedText&) const = default;
};

// `base` with the changes of both: by paragraphs, and by words inside of a paragraph that both changed. What both put
// in at the same place follows one another, `theirs` first; what both changed alike is there once. Takes time in
// proportion to the texts and the square of how much they differ, which is bounded: texts that differ in more count as
// different all through.
[[nodiscard]] MergedText mergeTexts(const QString& base, const QString& theirs, const QString& ours);

// Two versions of a text of which it is not known what they were made from: all words of both, in the order of each.
// Paragraphs that are the same are there once, and of two where one has all words of the other and more, the longer
// one; others follow one another, `first` before `second`, and are a clash. Takes as long as mergeTexts().
[[nodiscard]] MergedText unitedTexts(const QString& first, const QString& second);

}  // namespace quillo
