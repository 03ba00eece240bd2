#include "controls/ColorViews.h"

#include <QPaintEvent>
#include <QPainter>

namespace quillo {

bool PlainColorView::isOpaque() const {
  // The base view is never opaque, and only together with it would an opaque colour count.
  constexpr bool baseIsOpaque = false;
  return baseIsOpaque && m_color.alpha() == 255;
}

void PlainColorView::paintEvent(QPaintEvent* event) {
  if (!m_color.isValid()) return;
  QPainter painter(this);
  painter.fillRect(event->rect(), m_color);
}

void ClearColorView::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  // Copied, not laid over: clear laid over anything changes nothing.
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.fillRect(event->rect(), Qt::transparent);
}

}  // namespace quillo
