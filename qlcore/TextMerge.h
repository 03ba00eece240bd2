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

}  // namespace quillo
