#pragma once

#include <QColor>
#include <QImage>
#include <QSizeF>

#include <optional>
#include <vector>

namespace quillo {

// The black or white that reads on a background of this colour.
[[nodiscard]] QColor readableOn(const QColor& background);
// The same for a background that was seen here and there. The middle one counts, so that a neighbour's picture or some
// text does not; nothing when nothing was seen.
[[nodiscard]] std::optional<QColor> readableOnMost(std::vector<QRgb> seen);

// A PNG file, by the library for that: Qt's own reading first loads its modules for every other format, and the status
// item is drawn while the program starts. Null when it cannot be read.
[[nodiscard]] QImage imageOfPNG(const QString& path);

struct StatusImageStyle {
  std::optional<QColor> tint;     // replaces every colour of the image, keeping its shape
  std::optional<QColor> outline;  // a line of one point around the shape
  bool isHighlighted{false};
  QColor highlight;  // of the pressed look, put behind the image with little opacity
};

// `image` centred on a canvas of `points`, made smaller where it does not fit, at `pixelRatio`. The answer carries the
// ratio. An empty image gives the canvas alone.
[[nodiscard]] QImage statusImage(const QImage& image, QSizeF points, double pixelRatio, const StatusImageStyle& style);

}  // namespace quillo
