#pragma once

#include <QString>
#include <QStringList>

namespace quillo {

// The hashtags of a text, without the '#', first appearance first, each once (compared without case, the first
// spelling kept). A tag begins with '#' at the start of the text or after a character that is neither letter, digit nor
// '_'; it goes on with letters, digits, '_' and '-' of any script and holds at least one letter. Combining marks
// belong to the character that they follow.
[[nodiscard]] QStringList hashtags(const QString& text);

// The tags of an entry whose text was `before` and is `after` now. Those that were no hashtags of the old text were
// given by hand, and stay.
[[nodiscard]] QStringList tagsAfterEditing(const QStringList& tags, const QString& before, const QString& after);

}  // namespace quillo
