#include "controls/CustomCursorButton.h"

namespace quillo {

void CustomCursorButton::setCustomCursor(std::optional<QCursor> cursor) {
  m_customCursor = std::move(cursor);
  resetCursorRects();
}

void CustomCursorButton::resetCursorRects() {
  if (m_customCursor) {
    setCursor(*m_customCursor);
  } else {
    unsetCursor();
  }
}

}  // namespace quillo
