#pragma once

#include <QChar>
#include <QString>

#include <optional>

namespace quillo {

// Stands in the Markdown that is handed to Qt's reader, and has to be taken out of the document that comes back: at the
// start of a block whose line goes on with the paragraph before, and on both sides of an ordered item's own number.
inline constexpr QChar lineMark{0x205F};

// An entry's text as Markdown for Qt's reader, in which a single line break of the text is a line break, an item of an
// ordered list carries its own number, and what the reader would misread is mended. Nothing where the text is larger or
// more tangled than the reader can take: its work grows with the square of the marks in a paragraph and of the items of
// a list.
[[nodiscard]] std::optional<QString> markdownSource(const QString& text);

}  // namespace quillo
