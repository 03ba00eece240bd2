#pragma once

#include <QList>
#include <QPointF>
#include <QRect>
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
// click if that was on a screen, else the tray's likely corner: the end of the widest panel of the first screen that
// has one, or the top right of the first screen where none has. An empty rectangle when there is no screen at all.
[[nodiscard]] QRectF statusItemAnchor(const std::optional<QRectF>& icon, const std::optional<QPointF>& click,
                                      const QList<ScreenArea>& screens);

// The widest panel of the first screen that has one; empty where none has.
[[nodiscard]] QRectF panelStrip(const QList<ScreenArea>& screens);
// Some lines along a strip that show as well as all of its pixels what is usual in it, one pixel wide; none of an empty
// one.
[[nodiscard]] QList<QRect> linesAlong(const QRect& strip);

// The screens with work areas that leave out these panels, given in pixels. One that lies along no edge of its screen
// is passed over.
[[nodiscard]] QList<ScreenArea> withoutPanels(QList<ScreenArea> screens, const QList<QRect>& panels);

// `pixels`, as the X server counts them, in global coordinates: a screen keeps its top-left corner, and what lies on it
// is divided by its ratio. Rectangles on no screen are returned as they are.
[[nodiscard]] QRectF globalRectOfPixels(const QRectF& pixels, const QList<ScreenArea>& screens);
// The other way round.
[[nodiscard]] QRectF pixelsOfGlobalRect(const QRectF& rect, const QList<ScreenArea>& screens);

}  // namespace quillo
