#pragma once

#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

namespace quillo {

class Image;
// Images do not change once made, so whoever shows one shares it.
using ImageRef = std::shared_ptr<const Image>;

// How a drawn picture meets what is there already.
enum class CompositingOperation { Copy = 1, SourceOver = 2 };

// A picture of a size in points, held as bitmaps of one or several scales; a drawing takes the bitmap that suits the
// device. Rectangles of the picture itself have their origin at its bottom left and y upwards; rectangles to draw into
// are the painter's (y downwards, points). Pictures are always drawn upright.
class Image {
 public:
  // Of the size that the first bitmap's pixels and device pixel ratio give. Null bitmaps are left out.
  explicit Image(const std::vector<QImage>& bitmaps);
  explicit Image(const QImage& bitmap);
  virtual ~Image() = default;
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  // The program's own picture of that name at 1x and 2x; null where there is none. Each of its bitmaps is read when it
  // is first asked for: a start that shows only the icon in the tray needs few pictures, and most screens one scale.
  // Main thread only.
  [[nodiscard]] static ImageRef imageNamed(const QString& name);

  [[nodiscard]] QSizeF size() const { return m_size; }
  // All of them, smallest scale first.
  [[nodiscard]] std::vector<QImage> bitmaps() const;
  // The one to show on a device of `ratio` pixels a point: the smallest that needs no enlarging, otherwise the largest;
  // null when there is none.
  [[nodiscard]] const QImage* bitmapForRatio(double ratio) const;
  // Whether none is left to be read.
  [[nodiscard]] bool isRead() const;

  // `fromRect`: the part of the picture to draw; an empty rectangle means all of it. `fraction`: 0 to 1, the opacity.
  // `respectFlipped` has nothing to decide, as a painter's y always points down. `hints` are added to the painter's.
  virtual void drawInRect(QPainter& painter, const QRectF& rect, const QRectF& fromRect = {},
                          CompositingOperation operation = CompositingOperation::SourceOver, double fraction = 1.0,
                          bool respectFlipped = false,
                          QPainter::RenderHints hints = QPainter::SmoothPixmapTransform) const;

 protected:
  explicit Image(const QSizeF& size) : m_size(size) {}

 private:
  struct Bitmap {
    double ratio;
    QString file;  // that it is still to be read from; empty once it is there
    QImage image;
  };
  Image(const QSizeF& size, std::vector<Bitmap> bitmaps) : m_size(size), m_bitmaps(std::move(bitmaps)) {}
  static const QImage& read(Bitmap& bitmap);

  QSizeF m_size;
  mutable std::vector<Bitmap> m_bitmaps;  // smallest scale first
};

// A copy of the same size, drawn at the opacity `fraction`: the dimmed look of a button at rest.
[[nodiscard]] ImageRef imageWithFraction(const Image& image, double fraction);

// The bitmap to show on a device of `ratio` pixels a point: the smallest that needs no enlarging, otherwise the
// largest; null when there is none. `bitmaps` are sorted, smallest scale first.
[[nodiscard]] const QImage* bitmapForRatio(const std::vector<QImage>& bitmaps, double ratio);
// Pixels a point of what `painter` draws on, its own scaling included.
[[nodiscard]] double deviceRatio(const QPainter& painter);
[[nodiscard]] QPainter::CompositionMode compositionMode(CompositingOperation operation);

}  // namespace quillo
