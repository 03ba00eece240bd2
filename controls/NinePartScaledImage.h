#pragma once

#include "controls/Image.h"

#include <QPointF>

#include <array>

namespace quillo {

// The pieces in the order in which they are drawn.
enum class NinePart { TopLeft, Top, TopRight, Left, Center, Right, BottomLeft, Bottom, BottomRight };

// A picture that grows without its corners changing: cut into nine pieces once, at every scale that the source
// has. Corners keep their size, edges are stretched along, the centre both ways.
//
// The two points are the corners of the part that stretches, in the source's points, y upwards: the top one has the
// larger y. They are not checked: points outside the source or in the wrong order give pieces without a size, which
// draw nothing, and pieces that reach beyond the source are transparent there.
class NinePartScaledImage : public Image {
 public:
  // Cuts at once; `source` is not kept.
  NinePartScaledImage(const Image& source, const QPointF& scaleTopLeft, const QPointF& scaleBottomRight);
  // Cuts when it is first drawn or a piece asked for, at the scale that this needs, and keeps `source`, which is not
  // null, until it is cut at every scale.
  NinePartScaledImage(ImageRef source, const QPointF& scaleTopLeft, const QPointF& scaleBottomRight);

  // Draws all of it into `rect`, whatever `fromRect` and `hints` say. A rectangle too small for the corners shows what
  // fits of them, unscaled.
  void drawInRect(QPainter& painter, const QRectF& rect, const QRectF& fromRect = {},
                  CompositingOperation operation = CompositingOperation::SourceOver, double fraction = 1.0,
                  bool respectFlipped = false,
                  QPainter::RenderHints hints = QPainter::SmoothPixmapTransform) const override;

  // A piece's size in points as the two points give it; may be empty or negative.
  [[nodiscard]] QSizeF sizeOfPart(NinePart part) const;
  // A piece's bitmaps: as much of it as lies inside the source.
  [[nodiscard]] const std::vector<QImage>& bitmapsOfPart(NinePart part) const;

 private:
  struct Piece {
    QSizeF size;
    // Where the bitmaps lie in the piece, y downwards: all of it unless the piece reaches beyond the source.
    QRectF content;
    std::vector<QImage> bitmaps;
  };

  using Pieces = std::array<Piece, 9>;
  [[nodiscard]] const Pieces& pieces() const;
  // With no less than the bitmaps for a device of this ratio.
  [[nodiscard]] const Pieces& piecesForRatio(double ratio) const;
  [[nodiscard]] const Piece& piece(NinePart part) const { return pieces()[static_cast<size_t>(part)]; }
  // Of a source of `size` points, at the scales of these bitmaps of it.
  static Pieces piecesOf(QSizeF size, const std::vector<QImage>& bitmaps, const QPointF& scaleTopLeft,
                         const QPointF& scaleBottomRight);
  static Piece cut(QSizeF size, const std::vector<QImage>& bitmaps, const QRectF& rect);
  static void drawPiece(QPainter& painter, const Piece& piece, const QRectF& rect);

  QPointF m_scaleTopLeft;
  QPointF m_scaleBottomRight;
  mutable ImageRef m_source;     // until it is cut at every scale
  mutable double m_cutRatio{0};  // of the one scale it is cut at so far; 0 for none
  mutable Pieces m_pieces;
};

// Cuts `image`, draws it over what is there and forgets the pieces: for a picture that is drawn once.
void drawNinePartScaledInRect(const Image& image, QPainter& painter, const QRectF& rect, const QPointF& scaleTopLeft,
                              const QPointF& scaleBottomRight);

}  // namespace quillo
