#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <algorithm>

namespace quillo {

// How far the entry window reaches over the status button, in points.
inline constexpr double entryWindowOverlap = 5;

// The origin of the entry window under the status button, both from the bottom left in screen points: centred under the
// button, its top edge overlapping the button by 5 points. It is not kept on the screen: near an edge the window may
// reach past it, so that its arrow stands in the middle.
[[nodiscard]] inline QPointF entryWindowOrigin(const QRectF& button, QSizeF window) {
  return {button.x() + (window.width() - button.width()) * -0.5, button.y() - (window.height() + -entryWindowOverlap)};
}

// The same above the button: the window's bottom edge overlaps it.
[[nodiscard]] inline QPointF entryWindowOriginAbove(const QRectF& button, QSizeF window) {
  return {entryWindowOrigin(button, window).x(), button.y() + button.height() - entryWindowOverlap};
}

// Whether the window belongs above the button, as on a panel at the bottom of the screen: the button stands in the
// lower half of its screen with too little room below it. All from the bottom left.
[[nodiscard]] inline bool entryWindowBelongsAbove(const QRectF& button, QSizeF window, const QRectF& screen) {
  return !button.isEmpty() && button.center().y() < screen.center().y() &&
         entryWindowOrigin(button, window).y() < screen.y();
}

// The origin nearest to `origin` with which all of the window is on the screen. Where the screen is too small for it,
// its left and its top are.
[[nodiscard]] inline QPointF entryWindowOriginOnScreen(QPointF origin, QSizeF window, const QRectF& screen) {
  const double right = screen.x() + screen.width() - window.width();
  const double top = screen.y() + screen.height() - window.height();
  return {std::max(screen.x(), std::min(origin.x(), right)), std::min(top, std::max(origin.y(), screen.y()))};
}

}  // namespace quillo
