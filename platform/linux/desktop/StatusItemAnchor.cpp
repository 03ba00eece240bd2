#include "platform/linux/desktop/StatusItemAnchor.h"

#include <algorithm>

namespace quillo {

namespace {

bool isOnAScreen(const QRectF& rect, const QList<ScreenArea>& screens) {
  return std::any_of(screens.cbegin(), screens.cend(),
                     [&](const auto& screen) { return screen.geometry.intersects(rect); });
}

struct Panel {
  Qt::Edge edge{Qt::TopEdge};
  double width{0};  // 0 for none
};

Panel widestPanel(const ScreenArea& screen) {
  const auto& all = screen.geometry;
  const QRectF work = screen.workArea.intersected(all);
  if (work.isEmpty()) return {};
  Panel widest;
  for (const Panel& panel :
       {Panel{Qt::TopEdge, work.top() - all.top()}, Panel{Qt::BottomEdge, all.bottom() - work.bottom()},
        Panel{Qt::RightEdge, all.right() - work.right()}, Panel{Qt::LeftEdge, work.left() - all.left()}})
    if (panel.width > widest.width) widest = panel;
  return widest;
}

// The first screen with a panel, else the first of all; null where there is no screen.
const ScreenArea* screenWithPanel(const QList<ScreenArea>& screens) {
  const auto found =
      std::find_if(screens.cbegin(), screens.cend(), [](const auto& screen) { return widestPanel(screen).width > 0; });
  if (found != screens.cend()) return &*found;
  return screens.isEmpty() ? nullptr : &screens.constFirst();
}

QRectF trayCorner(const ScreenArea& screen) {
  const auto& all = screen.geometry;
  const Panel panel = widestPanel(screen);
  // The strip of the panel, of the icon's height where there is no panel.
  const double inset = (std::max(panel.width, unknownIconSize) - unknownIconSize) / 2;
  QRectF icon(0, 0, unknownIconSize, unknownIconSize);
  switch (panel.edge) {
    case Qt::TopEdge:
      icon.moveTopRight(all.topRight() + QPointF(0, inset));
      break;
    case Qt::BottomEdge:
      icon.moveBottomRight(all.bottomRight() - QPointF(0, inset));
      break;
    case Qt::RightEdge:
      icon.moveBottomRight(all.bottomRight() - QPointF(inset, 0));
      break;
    case Qt::LeftEdge:
      icon.moveBottomLeft(all.bottomLeft() + QPointF(inset, 0));
      break;
  }
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
  const ScreenArea* screen = screenWithPanel(screens);
  return screen ? trayCorner(*screen) : QRectF();
}

QRectF panelStrip(const QList<ScreenArea>& screens) {
  const ScreenArea* screen = screenWithPanel(screens);
  if (!screen) return {};
  const QRectF& all = screen->geometry;
  const auto [edge, width] = widestPanel(*screen);
  switch (edge) {
    case Qt::TopEdge:
      return {all.left(), all.top(), all.width(), width};
    case Qt::BottomEdge:
      return {all.left(), all.bottom() - width, all.width(), width};
    case Qt::LeftEdge:
      return {all.left(), all.top(), width, all.height()};
    case Qt::RightEdge:
      return {all.right() - width, all.top(), width, all.height()};
  }
  return {};
}

QList<QRect> linesAlong(const QRect& strip) {
  static constexpr int most = 5;
  QList<QRect> lines;
  const bool lies = strip.width() >= strip.height();
  const int width = lies ? strip.height() : strip.width();
  const int count = std::min(most, width);
  for (int i = 0; i < count; ++i) {
    // In the middle of its part, as what lies along the edges is often a border.
    const int place = (2 * i + 1) * width / (2 * count);
    lines << (lies ? QRect(strip.x(), strip.y() + place, strip.width(), 1)
                   : QRect(strip.x() + place, strip.y(), 1, strip.height()));
  }
  return lines;
}

QList<ScreenArea> withoutPanels(QList<ScreenArea> screens, const QList<QRect>& panels) {
  const QList<ScreenArea> before = screens;
  for (const QRect& pixels : panels) {
    const QRectF panel = globalRectOfPixels(pixels, before);
    for (ScreenArea& screen : screens) {
      const QRectF& all = screen.geometry;
      const QRectF part = panel & all;
      if (part.isEmpty()) continue;
      // A bar is longer than wide, and the long side is the one that lies along the edge.
      QRectF& work = screen.workArea;
      if (part.width() >= part.height()) {
        if (part.top() <= all.top())
          work.setTop(std::max(work.top(), part.bottom()));
        else if (part.bottom() >= all.bottom())
          work.setBottom(std::min(work.bottom(), part.top()));
      } else {
        if (part.left() <= all.left())
          work.setLeft(std::max(work.left(), part.right()));
        else if (part.right() >= all.right())
          work.setRight(std::min(work.right(), part.left()));
      }
    }
  }
  return screens;
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

QRectF pixelsOfGlobalRect(const QRectF& rect, const QList<ScreenArea>& screens) {
  for (const auto& screen : screens) {
    const QPointF origin = screen.geometry.topLeft();
    if (screen.geometry.contains(rect.center()))
      return {origin + (rect.topLeft() - origin) * screen.pixelRatio, rect.size() * screen.pixelRatio};
  }
  return rect;
}

}  // namespace quillo
