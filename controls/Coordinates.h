#pragma once

#include <QRectF>

namespace quillo {

// Frames of the layout are kept from the bottom left, Qt's from the top left. This turns either into the other
// inside a container of that height; it is its own inverse. For screens the container is the main screen, whose lower
// left corner is the origin of the bottom-left system.
[[nodiscard]] inline QRectF flipped(const QRectF& frame, double containerHeight) {
  return {frame.x(), containerHeight - frame.y() - frame.height(), frame.width(), frame.height()};
}

// Of the main screen, in points; 0 without a screen.
[[nodiscard]] double mainScreenHeight();

}  // namespace quillo
