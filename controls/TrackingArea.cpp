#include "controls/TrackingArea.h"

#include <QEnterEvent>
#include <QMouseEvent>

namespace quillo {

TrackingArea::TrackingArea(QWidget& view, const QRectF& rect, TrackingAreaOwner& owner, bool pointerInside)
    : m_view(&view), m_rect(rect), m_owner(owner), m_inside(pointerInside) {
  view.setMouseTracking(true);
  view.installEventFilter(this);
}

TrackingArea::~TrackingArea() {
  if (m_view) m_view->removeEventFilter(this);
}

bool TrackingArea::eventFilter(QObject* /*watched*/, QEvent* event) {
  switch (event->type()) {
    case QEvent::Enter:
      setPointerInside(m_rect.contains(static_cast<QEnterEvent*>(event)->position()));
      break;
    case QEvent::MouseMove:
      setPointerInside(m_rect.contains(static_cast<QMouseEvent*>(event)->position()));
      break;
    case QEvent::Leave:
    case QEvent::Hide:
      setPointerInside(false);
      break;
    default:
      break;
  }
  return false;
}

void TrackingArea::setPointerInside(bool inside) {
  if (inside == m_inside) return;
  m_inside = inside;
  if (inside) {
    m_owner.mouseEntered();
  } else {
    m_owner.mouseExited();
  }
}

}  // namespace quillo
