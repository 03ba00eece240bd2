#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>

#include <optional>

namespace quillo {

// A screen in global coordinates (device-independent, top-left based), as far as placing things on it goes.
struct ScreenArea {
  QRectF geometry;
  QRectF workArea;       // without panels; equal to the geometry where nobody tells
  double pixelRatio{1};  // pixels per point
};

// The side of the square that stands for an icon whose place is unknown, in points.
inline constexpr double unknownIconSize = 22;

// The place for a window of the status item: its icon where that is known and on a screen, else a square around the
// click if that was on a screen, else the tray's likely corner of the first screen: the end of the widest panel, or the
// top right where there is none. An empty rectangle when there is no screen at all.
[[nodiscard]] QRectF statusItemAnchor(const std::optional<QRectF>& icon, const std::optional<QPointF>& click,
                                      const QList<ScreenArea>& screens);

// `pixels`, as the X server counts them, in global coordinates: a screen keeps its top-left corner, and what lies on it
// is divided by its ratio. Rectangles on no screen are returned as they are.
[[nodiscard]] QRectF globalRectOfPixels(const QRectF& pixels, const QList<ScreenArea>& screens);

}  // namespace quillo
