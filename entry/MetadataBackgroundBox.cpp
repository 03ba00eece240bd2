#include "entry/MetadataBackgroundBox.h"

#include <QPainter>
#include <QPainterPath>

namespace quillo {

// Those of the paper, which has a border of one point.
static constexpr double radius = 4;
static constexpr double border = 1;

void MetadataBackgroundBox::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QRectF band = QRectF(rect()).adjusted(border, 0, -border, -border);
  painter.setClipRect(band);
  // Round below only: the upper corners lie outside.
  QPainterPath path;
  path.addRoundedRect(band.adjusted(0, -2 * radius, 0, 0), radius, radius);
  painter.fillPath(path, QColor(0xee, 0xec, 0xe5));
  painter.fillRect(QRectF(band.left(), 0, band.width(), 1), QColor(0xd9, 0xd7, 0xcf));
}

}  // namespace quillo
