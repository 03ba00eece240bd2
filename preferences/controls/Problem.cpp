#include "preferences/controls/Problem.h"

#include <QAccessible>
#include <QLabel>

namespace quillo {

void showProblem(QLabel& label, const QString& text) {
  label.setText(text);
  if (text.isEmpty() || !QAccessible::isActive()) return;
  QAccessibleEvent event(&label, QAccessible::Alert);
  QAccessible::updateAccessibility(&event);
}

}  // namespace quillo
