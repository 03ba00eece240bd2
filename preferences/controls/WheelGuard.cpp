#include "preferences/controls/WheelGuard.h"

#include <QEvent>
#include <QWidget>

namespace quillo {

WheelGuard::WheelGuard(QWidget& field) : QObject(&field), m_field(field) {
  field.setFocusPolicy(Qt::StrongFocus);
  field.installEventFilter(this);
}

bool WheelGuard::eventFilter(QObject*, QEvent* event) {
  if (event->type() != QEvent::Wheel || m_field.hasFocus()) return false;
  // On to what is around the field.
  event->ignore();
  return true;
}

}  // namespace quillo
