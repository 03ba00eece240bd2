#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace quillo {

// The origin of the entry window under the status button, both from the bottom left in screen points: centred under the
// button, its top edge overlapping the button by 5 points. It is not kept on the screen: near an edge the window may
// reach past it. That is wanted.
[[nodiscard]] inline QPointF entryWindowOrigin(const QRectF& button, QSizeF window) {
  return {button.x() + (window.width() - button.width()) * -0.5, button.y() - (window.height() + -5.0)};
}

}  // namespace quillo
