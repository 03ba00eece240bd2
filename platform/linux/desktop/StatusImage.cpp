#include "platform/linux/desktop/StatusImage.h"

#include <QFile>
#include <QPainter>

#include <png.h>

#include <algorithm>

namespace quillo {

namespace {

constexpr double highlightOpacity = 0.35;
constexpr double highlightCornerRadius = 4;

// Puts the canvas' shape in that colour behind it, moved by a point to every side.
void outline(QImage& canvas, const QColor& colour, double pixelRatio) {
  QImage shape = canvas;
  QPainter filler(&shape);
  filler.setCompositionMode(QPainter::CompositionMode_SourceIn);
  filler.fillRect(shape.rect(), colour);
  filler.end();
  QPainter painter(&canvas);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
  for (const int x : {-1, 0, 1})
    for (const int y : {-1, 0, 1}) painter.drawImage(QPointF(x, y) * pixelRatio, shape);
}

}  // namespace

QColor readableOn(const QColor& background) {
  // Perceived brightness; where it is exactly in the middle, white reads better.
  const double brightness = 0.299 * background.redF() + 0.587 * background.greenF() + 0.114 * background.blueF();
  return brightness > 0.5 ? QColor(Qt::black) : QColor(Qt::white);
}

std::optional<QColor> readableOnMost(std::vector<QRgb> seen) {
  if (seen.empty()) return {};
  const auto middle = seen.begin() + static_cast<std::ptrdiff_t>(seen.size() / 2);
  std::nth_element(seen.begin(), middle, seen.end(), [](QRgb a, QRgb b) { return qGray(a) < qGray(b); });
  return readableOn(QColor(*middle));
}

QImage imageOfPNG(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray bytes = file.readAll();
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&png, bytes.constData(), static_cast<size_t>(bytes.size()))) return {};
  png.format = PNG_FORMAT_RGBA;
  QImage image(static_cast<int>(png.width), static_cast<int>(png.height), QImage::Format_RGBA8888);
  const auto lineLength = static_cast<png_int_32>(image.bytesPerLine());
  // Either ends the reading and gives back what it took.
  if (image.isNull())
    png_image_free(&png);
  else if (!png_image_finish_read(&png, nullptr, image.bits(), lineLength, nullptr))
    image = {};
  return image;
}

QImage statusImage(const QImage& image, QSizeF points, double pixelRatio, const StatusImageStyle& style) {
  QImage canvas((points * pixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  QPainter painter(&canvas);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  if (!image.isNull()) {
    const QSizeF size = image.width() > canvas.width() || image.height() > canvas.height()
                            ? QSizeF(image.size()).scaled(canvas.size(), Qt::KeepAspectRatio)
                            : QSizeF(image.size());
    QRectF place(QPointF(), size);
    place.moveCenter(QRectF(canvas.rect()).center());
    // On whole pixels, or the picture gets blurred.
    place.moveTo(place.topLeft().toPoint());
    painter.drawImage(place, image);
  }
  if (style.tint) {
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(canvas.rect(), *style.tint);
  }
  if (style.outline) {
    painter.end();
    outline(canvas, *style.outline, pixelRatio);
    painter.begin(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
  }
  if (style.isHighlighted) {
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
    QColor colour = style.highlight;
    colour.setAlphaF(highlightOpacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    const double radius = highlightCornerRadius * pixelRatio;
    painter.drawRoundedRect(QRectF(canvas.rect()), radius, radius);
  }
  painter.end();
  canvas.setDevicePixelRatio(pixelRatio);
  return canvas;
}

}  // namespace quillo
