#include "controls/NinePartScaledImageView.h"

namespace quillo {

void NinePartScaledImageView::setNinePartScaledImage(ImageRef image) {
  m_image = std::move(image);
  update();
}

void NinePartScaledImageView::paintEvent(QPaintEvent* /*event*/) {
  if (!m_image) return;
  QPainter painter(this);
  m_image->drawInRect(painter, rect());
}

}  // namespace quillo
