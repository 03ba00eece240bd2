#include "controls/AttributedString.h"

#include <QFontMetricsF>
#include <QStringList>

#include <array>
#include <cmath>

namespace quillo {

namespace {

void drawLines(QPainter& painter, const QStringList& lines, const QFontMetricsF& metrics, const QRectF& rect) {
  double baseline = rect.top() + metrics.ascent();
  for (const QString& line : lines) {
    const double width = metrics.horizontalAdvance(line);
    painter.drawText(QPointF(rect.left() + (rect.width() - width) * 0.5, baseline), line);
    baseline += metrics.lineSpacing();
  }
}

// A blur of a point or so: the text five times, faintly, spread by half the radius.
void drawShadow(QPainter& painter, const TextShadow& shadow, const QStringList& lines, const QFontMetricsF& metrics,
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
  painter.setFont(attributes.font);
  const QFontMetricsF metrics(attributes.font);
  const QStringList lines = string.split(u'\n');
  if (attributes.shadow) drawShadow(painter, *attributes.shadow, lines, metrics, rect);
  painter.setPen(attributes.foregroundColor);
  drawLines(painter, lines, metrics, rect);
  painter.restore();
}

}  // namespace quillo
