#pragma once

#include <QByteArray>
#include <QString>

namespace quillo {

// The Markdown of an entry as HTML, in which a line break of the text is one, too; HTML in it is text. What the reader
// would work on for too long is not drawn but stands in paragraphs as it was written.
[[nodiscard]] QByteArray htmlOfMarkdown(const QString& text);

}  // namespace quillo
