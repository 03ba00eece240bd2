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

// The tags of an entry whose text was `before` and is `after` now: without those whose hashtags went, and with those
// that are new in the text. So a tag that was given by hand stays, and one that was taken out by hand does not come
// back with its hashtag, which still stands there, but with one that is written anew.
[[nodiscard]] QStringList tagsAfterEditing(const QStringList& tags, const QString& before, const QString& after);

}  // namespace quillo
