#include "about/CreditsView.h"

#include <QFocusEvent>

namespace quillo {

void CreditsView::focusInEvent(QFocusEvent* event) {
  QTextBrowser::focusInEvent(event);
  const bool forwards = event->reason() == Qt::TabFocusReason;
  if (!forwards && event->reason() != Qt::BacktabFocusReason) return;
  moveCursor(forwards ? QTextCursor::Start : QTextCursor::End);
  focusNextPrevChild(forwards);
}

bool CreditsView::focusNextPrevChild(bool next) {
  // The base class holds on to the first link when the keyboard goes backwards.
  const bool leaves = !next && textCursor().hasSelection() && textCursor().selectionStart() == 0;
  // Past the base class, on purpose: that of all widgets leaves.
  if (leaves) return QWidget::focusNextPrevChild(next);  // NOLINT(bugprone-parent-virtual-call)
  return QTextBrowser::focusNextPrevChild(next);
}

}  // namespace quillo
