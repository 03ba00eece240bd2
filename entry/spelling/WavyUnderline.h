#pragma once

#include <QColor>
#include <QPointF>
#include <QTextFormat>

class QPainter;
class QTextLayout;

namespace quillo {

// Wavy underlines as smooth as the screen allows; Qt's own are a small picture that is blown up on dense
// screens.

// A format that underlines: it changes nothing of how Qt draws the text itself.
[[nodiscard]] QTextCharFormat wavyUnderline(const QColor& color);

// Draws the underlines of a paragraph whose layout is drawn at `origin`.
void drawWavyUnderlines(QPainter& painter, const QTextLayout& layout, QPointF origin);

}  // namespace quillo
