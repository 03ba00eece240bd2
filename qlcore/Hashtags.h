#pragma once

#include <QString>
#include <QStringList>

namespace quillo {

// The hashtags of a text, without the '#', first appearance first, each once (compared without case, the first
// spelling kept). A tag begins with '#' at the start of the text or after a character that is neither letter, digit nor
// '_'; it goes on with letters, digits, '_' and '-' of any script and holds at least one letter. Combining marks
// belong to the character that they follow.
[[nodiscard]] QStringList hashtags(const QString& text);

}  // namespace quillo
