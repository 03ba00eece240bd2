#pragma once

#include "controls/Image.h"

#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <cmath>

namespace quillo {

// What a view looks like, drawn once and kept while its size and the screen's scale stay as they are. One picture of
// the view's size; for views that are costly to draw and seldom change.
class CachedDrawing {
 public:
  // To be called when the view would look different.
  void invalidate() { m_pixmap = QPixmap(); }

  // From the view's paintEvent(): `draw` is called with a painter where the picture has to be drawn anew.
  template <typename Draw>
  void paint(QWidget& view, Draw draw) {
    QPainter onView(&view);
    const double ratio = deviceRatio(onView);
    const QSize pixels(static_cast<int>(std::ceil(view.width() * ratio)),
                       static_cast<int>(std::ceil(view.height() * ratio)));
    if (pixels.isEmpty()) return;
    if (m_pixmap.size() != pixels || m_pixmap.devicePixelRatio() != ratio) {
      m_pixmap = QPixmap(pixels);
      m_pixmap.setDevicePixelRatio(ratio);
      m_pixmap.fill(Qt::transparent);
      QPainter painter(&m_pixmap);
      draw(painter);
    }
    onView.drawPixmap(0, 0, m_pixmap);
  }

 private:
  QPixmap m_pixmap;
};

}  // namespace quillo
