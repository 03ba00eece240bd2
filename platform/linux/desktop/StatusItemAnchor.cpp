#include "platform/linux/desktop/StatusItemAnchor.h"

#include <algorithm>

namespace quillo {

namespace {

bool isOnAScreen(const QRectF& rect, const QList<ScreenArea>& screens) {
  return std::any_of(screens.cbegin(), screens.cend(),
                     [&](const auto& screen) { return screen.geometry.intersects(rect); });
}

QRectF trayCorner(const ScreenArea& screen) {
  const auto& all = screen.geometry;
  QRectF work = screen.workArea.intersected(all);
  if (work.isEmpty()) work = all;
  const double top = work.top() - all.top();
  const double bottom = all.bottom() - work.bottom();
  const double left = work.left() - all.left();
  const double right = all.right() - work.right();
  const double widest = std::max({top, bottom, left, right, 0.0});

  // The strip of the panel, of the icon's height where there is no panel.
  const double inset = (std::max(widest, unknownIconSize) - unknownIconSize) / 2;
  QRectF icon(0, 0, unknownIconSize, unknownIconSize);
  icon.moveTopRight(all.topRight() + QPointF(0, inset));
  if (widest == 0 || widest == top) return icon;
  if (widest == bottom)
    icon.moveBottomRight(all.bottomRight() - QPointF(0, inset));
  else if (widest == right)
    icon.moveBottomRight(all.bottomRight() - QPointF(inset, 0));
  else
    icon.moveBottomLeft(all.bottomLeft() + QPointF(inset, 0));
  return icon;
}

}  // namespace

QRectF statusItemAnchor(const std::optional<QRectF>& icon, const std::optional<QPointF>& click,
                        const QList<ScreenArea>& screens) {
  if (icon && isOnAScreen(*icon, screens)) return *icon;
  if (click) {
    QRectF around(0, 0, unknownIconSize, unknownIconSize);
    around.moveCenter(*click);
    for (const auto& screen : screens)
      if (screen.geometry.contains(*click)) return around;
  }
  return screens.isEmpty() ? QRectF() : trayCorner(screens.constFirst());
}

QRectF globalRectOfPixels(const QRectF& pixels, const QList<ScreenArea>& screens) {
  for (const auto& screen : screens) {
    const QPointF origin = screen.geometry.topLeft();
    const QRectF screenPixels(origin, screen.geometry.size() * screen.pixelRatio);
    if (screenPixels.contains(pixels.center()))
      return {origin + (pixels.topLeft() - origin) / screen.pixelRatio, pixels.size() / screen.pixelRatio};
  }
  return pixels;
}

}  // namespace quillo
