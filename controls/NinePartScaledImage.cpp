#include "controls/NinePartScaledImage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillo {

namespace {

// The four lines between the columns (or rows) of a frame that runs from `start` to `end`, with the two outer sizes.
// The outer ones keep their size even where they meet or overlap; the frame cuts off what lies outside.
struct Lines {
  double start, afterFirst, beforeLast, end;
};

Lines linesFor(double start, double end, double first, double last) {
  return {start, start + std::max(first, 0.0), end - std::max(last, 0.0), end};
}

// A part of a bitmap of 32 bits a pixel. Its pixels are the bitmap's own, which stay as long as the part does.
QImage partOf(const QImage& bitmap, const QRect& rect) {
  Q_ASSERT(bitmap.depth() == 32);
  auto* const kept = new QImage(bitmap);
  const uchar* const first = kept->constScanLine(rect.y()) + qsizetype{rect.x()} * 4;
  // Nobody writes through it; of memory that is said to be constant, setting the ratio would make a copy.
  QImage part(
      const_cast<uchar*>(first), rect.width(), rect.height(), kept->bytesPerLine(), kept->format(),
      [](void* image) { delete static_cast<QImage*>(image); }, kept);
  part.setDevicePixelRatio(bitmap.devicePixelRatio());
  return part;
}

bool isFinite(const QRectF& rect) {
  return std::isfinite(rect.x()) && std::isfinite(rect.y()) && std::isfinite(rect.width()) &&
         std::isfinite(rect.height());
}

}  // namespace

NinePartScaledImage::NinePartScaledImage(const Image& source, const QPointF& scaleTopLeft,
                                         const QPointF& scaleBottomRight)
    : Image(source.size()),
      m_scaleTopLeft(scaleTopLeft),
      m_scaleBottomRight(scaleBottomRight),
      m_pieces(piecesOf(source.size(), source.bitmaps(), scaleTopLeft, scaleBottomRight)) {}

NinePartScaledImage::NinePartScaledImage(ImageRef source, const QPointF& scaleTopLeft, const QPointF& scaleBottomRight)
    : Image(source->size()),
      m_scaleTopLeft(scaleTopLeft),
      m_scaleBottomRight(scaleBottomRight),
      m_source(std::move(source)) {}

const NinePartScaledImage::Pieces& NinePartScaledImage::pieces() const {
  if (const ImageRef source = std::exchange(m_source, nullptr))
    m_pieces = piecesOf(size(), source->bitmaps(), m_scaleTopLeft, m_scaleBottomRight);
  return m_pieces;
}

const NinePartScaledImage::Pieces& NinePartScaledImage::piecesForRatio(double ratio) const {
  if (!m_source) return m_pieces;
  const QImage* bitmap = m_source->bitmapForRatio(ratio);
  if (!bitmap || m_source->isRead()) return pieces();
  if (m_cutRatio != bitmap->devicePixelRatio()) {
    m_cutRatio = bitmap->devicePixelRatio();
    m_pieces = piecesOf(size(), {*bitmap}, m_scaleTopLeft, m_scaleBottomRight);
  }
  return m_pieces;
}

NinePartScaledImage::Pieces NinePartScaledImage::piecesOf(QSizeF size, const std::vector<QImage>& bitmaps,
                                                          const QPointF& scaleTopLeft,
                                                          const QPointF& scaleBottomRight) {
  const double left = scaleTopLeft.x();
  const double top = scaleTopLeft.y();
  const double right = scaleBottomRight.x();
  const double bottom = scaleBottomRight.y();
  const double width = size.width();
  const double height = size.height();
  return {
      cut(size, bitmaps, {0, top, left, height - top}),
      cut(size, bitmaps, {left, top, right - left, height - top}),
      cut(size, bitmaps, {right, top, width - right, height - top}),
      cut(size, bitmaps, {0, bottom, left, top - bottom}),
      cut(size, bitmaps, {left, bottom, right - left, top - bottom}),
      cut(size, bitmaps, {right, bottom, width - right, top - bottom}),
      cut(size, bitmaps, {0, 0, left, bottom}),
      cut(size, bitmaps, {left, 0, right - left, bottom}),
      cut(size, bitmaps, {right, 0, width - right, bottom}),
  };
}

NinePartScaledImage::Piece NinePartScaledImage::cut(QSizeF size, const std::vector<QImage>& bitmaps,
                                                    const QRectF& rect) {
  Piece piece{rect.size(), {}, {}};
  // An empty or negative size, or one that is no number, leaves the piece without a bitmap.
  if (!isFinite(rect) || !(rect.width() > 0) || !(rect.height() > 0)) return piece;
  // Only what lies inside the source: there are no pixels outside.
  const QRectF inside = rect & QRectF(QPointF(0, 0), size);
  if (inside.isEmpty()) return piece;
  piece.content = QRectF(inside.x() - rect.x(), rect.y() + rect.height() - inside.y() - inside.height(), inside.width(),
                         inside.height());
  for (const QImage& bitmap : bitmaps) {
    const double ratio = bitmap.devicePixelRatio();
    // Each line is rounded by itself, so the pieces cover every pixel of the source exactly once.
    const int x = qRound(inside.x() * ratio);
    const int y = qRound((size.height() - inside.y() - inside.height()) * ratio);
    const int right = qRound((inside.x() + inside.width()) * ratio);
    const int bottom = qRound((size.height() - inside.y()) * ratio);
    if (right <= x || bottom <= y) continue;
    piece.bitmaps.push_back(partOf(bitmap, QRect(x, y, right - x, bottom - y)));
  }
  return piece;
}

void NinePartScaledImage::drawPiece(QPainter& painter, const Piece& piece, const QRectF& rect) {
  const QImage* bitmap = quillo::bitmapForRatio(piece.bitmaps, deviceRatio(painter));
  if (!bitmap || rect.isEmpty()) return;
  const double scaleX = rect.width() / piece.size.width();
  const double scaleY = rect.height() / piece.size.height();
  const QRectF target(rect.x() + piece.content.x() * scaleX, rect.y() + piece.content.y() * scaleY,
                      piece.content.width() * scaleX, piece.content.height() * scaleY);
  painter.drawImage(target, *bitmap, QRectF(QPointF(0, 0), QSizeF(bitmap->size())));
}

void NinePartScaledImage::drawInRect(QPainter& painter, const QRectF& rect, const QRectF& /*fromRect*/,
                                     CompositingOperation operation, double fraction, bool /*respectFlipped*/,
                                     QPainter::RenderHints /*hints*/) const {
  if (!isFinite(rect) || rect.isEmpty()) return;
  const Pieces& pieces = piecesForRatio(deviceRatio(painter));
  const auto sizeOf = [&pieces](NinePart part) { return pieces[static_cast<size_t>(part)].size; };
  const Lines columns =
      linesFor(rect.left(), rect.right(), sizeOf(NinePart::Left).width(), sizeOf(NinePart::Right).width());
  const Lines rows =
      linesFor(rect.top(), rect.bottom(), sizeOf(NinePart::Top).height(), sizeOf(NinePart::Bottom).height());

  painter.save();
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  // Without it every line falls on the edge of a device pixel, the same for both neighbours: no seams, no soft edges at
  // 1.25x, 1.5x and the like.
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setCompositionMode(compositionMode(operation));
  painter.setOpacity(painter.opacity() * std::clamp(fraction, 0.0, 1.0));
  const bool fits = columns.afterFirst <= columns.beforeLast && rows.afterFirst <= rows.beforeLast;
  if (!fits) painter.setClipRect(rect, Qt::IntersectClip);
  const std::array<std::pair<double, double>, 3> across{{{columns.start, columns.afterFirst},
                                                         {columns.afterFirst, columns.beforeLast},
                                                         {columns.beforeLast, columns.end}}};
  const std::array<std::pair<double, double>, 3> down{
      {{rows.start, rows.afterFirst}, {rows.afterFirst, rows.beforeLast}, {rows.beforeLast, rows.end}}};
  for (size_t index = 0; index < pieces.size(); ++index) {
    const auto [left, right] = across[index % 3];
    const auto [top, bottom] = down[index / 3];
    drawPiece(painter, pieces[index], QRectF(left, top, right - left, bottom - top));
  }
  painter.restore();
}

QSizeF NinePartScaledImage::sizeOfPart(NinePart part) const {
  return piece(part).size;
}

const std::vector<QImage>& NinePartScaledImage::bitmapsOfPart(NinePart part) const {
  return piece(part).bitmaps;
}

void drawNinePartScaledInRect(const Image& image, QPainter& painter, const QRectF& rect, const QPointF& scaleTopLeft,
                              const QPointF& scaleBottomRight) {
  NinePartScaledImage(image, scaleTopLeft, scaleBottomRight).drawInRect(painter, rect);
}

}  // namespace quillo
