#include "entry/spelling/WavyUnderline.h"

#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

#include <algorithm>

namespace quillo {

namespace {

constexpr int colorProperty = QTextFormat::UserProperty + 1;

// Points.
constexpr double belowBaseline = 3;
constexpr double halfWave = 2;
constexpr double swing = 1.7;
constexpr double penWidth = 1.1;

// At most one curve for every two points of the line's width.
void drawWave(QPainter& painter, double left, double right, double y) {
  QPainterPath wave(QPointF(left, y));
  double direction = -1;
  for (double x = left; x + halfWave / 2 < right; x += halfWave) {
    wave.quadTo(QPointF(x + halfWave / 2, y + direction * swing), QPointF(x + halfWave, y));
    direction = -direction;
  }
  painter.drawPath(wave);
}

void drawUnderline(QPainter& painter, const QTextLayout& layout, int start, int end, QPointF origin) {
  for (int i = 0; i < layout.lineCount(); ++i) {
    const QTextLine line = layout.lineAt(i);
    const int from = std::max(start, line.textStart());
    const int to = std::min(end, line.textStart() + line.textLength());
    if (from >= to) continue;
    // From right to left the first place is the one on the right.
    const double a = line.cursorToX(from);
    const double b = line.cursorToX(to);
    drawWave(painter, origin.x() + std::min(a, b), origin.x() + std::max(a, b),
             origin.y() + line.y() + line.ascent() + belowBaseline);
  }
}

}  // namespace

QTextCharFormat wavyUnderline(const QColor& color) {
  QTextCharFormat format;
  format.setProperty(colorProperty, color);
  return format;
}

void drawWavyUnderlines(QPainter& painter, const QTextLayout& layout, QPointF origin) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  const auto formats = layout.formats();
  for (const QTextLayout::FormatRange& range : formats) {
    if (!range.format.hasProperty(colorProperty)) continue;
    painter.setPen(QPen(range.format.property(colorProperty).value<QColor>(), penWidth, Qt::SolidLine, Qt::RoundCap));
    drawUnderline(painter, layout, range.start, range.start + range.length, origin);
  }
}

}  // namespace quillo
