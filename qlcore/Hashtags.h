#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace quillo {

// Where a hashtag stands in its text, in UTF-16 units: from its '#' on, which `length` counts too.
struct HashtagRange {
  qsizetype start{0};
  qsizetype length{0};
  bool operator==(const HashtagRange&) const = default;
};

// Every hashtag of a text in the order of the text. A tag begins with '#' at the start of the text or after a character
// that is neither letter, digit nor
// '_'; it goes on with letters, digits, '_' and '-' of any script and holds at least one letter. Combining marks
// belong to the character that they follow.
[[nodiscard]] QList<HashtagRange> hashtagRanges(const QString& text);

// The same without the '#', first appearance first, each once (compared without case, the first spelling kept).
[[nodiscard]] QStringList hashtags(const QString& text);

// The tags of an entry whose text was `before` and is `after` now. Those that were no hashtags of the old text were
// given by hand, and stay.
[[nodiscard]] QStringList tagsAfterEditing(const QStringList& tags, const QString& before, const QString& after);

}  // namespace quillo
