#pragma once

#include "controls/Button.h"

#include <QCursor>

#include <optional>

namespace quillo {

// A button with a cursor of its own over all of itself. Without one it has the cursor of the window around it.
class CustomCursorButton : public Button {
  Q_OBJECT

 public:
  explicit CustomCursorButton(QWidget* parent = nullptr) : Button(parent) {}

  [[nodiscard]] const std::optional<QCursor>& customCursor() const { return m_customCursor; }
  // Takes effect at once, under the pointer too.
  void setCustomCursor(std::optional<QCursor> cursor);
  void resetCursorRects();

 private:
  std::optional<QCursor> m_customCursor;
};

}  // namespace quillo
