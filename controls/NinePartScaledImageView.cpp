#include "controls/NinePartScaledImageView.h"

namespace quillo {

void NinePartScaledImageView::setNinePartScaledImage(ImageRef image) {
  m_image = std::move(image);
  m_drawing.invalidate();
  update();
}

void NinePartScaledImageView::paintEvent(QPaintEvent* /*event*/) {
  if (!m_image) return;
  m_drawing.paint(*this, [this](QPainter& painter) { m_image->drawInRect(painter, rect()); });
}

}  // namespace quillo
