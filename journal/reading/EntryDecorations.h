#pragma once

#include <QList>
#include <QRectF>

class QPainter;
class QTextBlock;

namespace quillo {

class EntryDocument;

// What stands behind and beside an entry's text: panels of code, bars of quotes, marks of items, lines across. Drawn in
// the document's units where they meet `clip`, before the document itself.
void paintDecorations(QPainter& painter, const EntryDocument& document, const QRectF& clip);

// Where the characters of a block stand in the document, one rectangle a line; `start` and `length` are within the
// block.
[[nodiscard]] QList<QRectF> rectsOfCharacters(const EntryDocument& document, const QTextBlock& block, int start,
                                              int length);

// The first block that may reach into or below `y`.
[[nodiscard]] QTextBlock firstBlockAt(const EntryDocument& document, double y);

}  // namespace quillo
