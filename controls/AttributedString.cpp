#include "controls/AttributedString.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QStringList>
#include <QTextLayout>

#include <array>
#include <cmath>

namespace quillo {

namespace {

// A line made ready once, as finding its glyphs is most of the work of drawing it.
struct Line {
  double width;
  QList<QGlyphRun> runs;  // from the beginning of the baseline
};

Line lineOf(const QString& text, const QFont& font, const QFontMetricsF& metrics) {
  QTextLayout layout(text, font);
  layout.beginLayout();
  const QTextLine line = layout.createLine();
  layout.endLayout();
  Line ready{metrics.horizontalAdvance(text), line.glyphRuns()};
  for (QGlyphRun& run : ready.runs) {
    QList<QPointF> positions = run.positions();
    for (QPointF& position : positions) position.ry() -= line.ascent();
    run.setPositions(positions);
  }
  return ready;
}

void drawLines(QPainter& painter, const QList<Line>& lines, const QFontMetricsF& metrics, const QRectF& rect) {
  double baseline = rect.top() + metrics.ascent();
  for (const Line& line : lines) {
    const double left = rect.left() + (rect.width() - line.width) * 0.5;
    // In the steps in which Qt places text.
    const QPointF beginning(std::trunc(left * 64) / 64, baseline);
    for (const QGlyphRun& run : line.runs) painter.drawGlyphRun(beginning, run);
    baseline += metrics.lineSpacing();
  }
}

// A blur of a point or so: the text five times, faintly, spread by half the radius.
void drawShadow(QPainter& painter, const TextShadow& shadow, const QList<Line>& lines, const QFontMetricsF& metrics,
                const QRectF& rect) {
  const double spread = shadow.blurRadius * 0.5;
  const std::array<QPointF, 5> places{QPointF(0, 0), QPointF(spread, 0), QPointF(-spread, 0), QPointF(0, spread),
                                      QPointF(0, -spread)};
  QColor color = shadow.color;
  color.setAlphaF(color.alphaF() / static_cast<float>(places.size()));
  painter.setPen(color);
  for (const QPointF& place : places) {
    drawLines(painter, lines, metrics, rect.translated(shadow.offset.x() + place.x(), place.y() - shadow.offset.y()));
  }
}

}  // namespace

QSizeF AttributedString::size() const {
  if (string.isEmpty()) return {0, 0};
  const QFontMetricsF metrics(attributes.font);
  const QStringList lines = string.split(u'\n');
  double width = 0;
  for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
  const double height = metrics.height() + metrics.lineSpacing() * static_cast<double>(lines.size() - 1);
  return {std::ceil(width), std::ceil(height)};
}

void AttributedString::drawInRect(QPainter& painter, const QRectF& rect) const {
  if (string.isEmpty()) return;
  painter.save();
  const QFontMetricsF metrics(attributes.font);
  QList<Line> lines;
  for (const QString& text : string.split(u'\n')) lines << lineOf(text, attributes.font, metrics);
  if (attributes.shadow) drawShadow(painter, *attributes.shadow, lines, metrics, rect);
  painter.setPen(attributes.foregroundColor);
  drawLines(painter, lines, metrics, rect);
  painter.restore();
}

}  // namespace quillo
