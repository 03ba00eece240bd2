#pragma once

#include <QPointF>
#include <QRectF>

#include <optional>

// Points between a window and the screen, both from the bottom left. A window is given by its frame in screen points;
// without one, the answer is (0, 0).
namespace quillo::WindowConvertPoint {

[[nodiscard]] inline QPointF convertPointToScreen(const std::optional<QRectF>& window, QPointF point) {
  return window ? window->topLeft() + point : QPointF();
}

[[nodiscard]] inline QPointF convertPointFromScreen(const std::optional<QRectF>& window, QPointF point) {
  return window ? point - window->topLeft() : QPointF();
}

}  // namespace quillo::WindowConvertPoint
