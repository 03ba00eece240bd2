#pragma once

#include <QString>
#include <QStringList>

namespace quillo::ctl {

// Those of `known` that may have been meant by a mistyped word, the likest first, compared without case: a slip or two
// away, or with the word as a part.
[[nodiscard]] QStringList nearestWords(const QString& word, const QStringList& known);

}  // namespace quillo::ctl
