#include "controls/Image.h"

#include <QFile>
#include <QHash>
#include <QImageReader>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <utility>

// Outside every namespace, as the macro inside declares a function of the global one.
static void initializeResources() {
  Q_INIT_RESOURCE(resources);
}

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The one format that every drawing can take without converting.
constexpr QImage::Format drawnFormat = QImage::Format_ARGB32_Premultiplied;

QImage prepared(const QImage& bitmap) {
  return bitmap.format() == drawnFormat ? bitmap : bitmap.convertToFormat(drawnFormat);
}

// The first that needs no enlarging, otherwise the last. `Ratio` answers a bitmap's.
template <typename Bitmaps, typename Ratio>
auto suiting(Bitmaps& bitmaps, double wanted, Ratio ratioOf) {
  const auto enough =
      std::ranges::find_if(bitmaps, [&](const auto& bitmap) { return std::invoke(ratioOf, bitmap) >= wanted - 0.01; });
  return enough == bitmaps.end() && !bitmaps.empty() ? std::prev(bitmaps.end()) : enough;
}

// Said, or Qt loads its plug-ins for all others to ask them first.
constexpr char pictureFormat[] = "PNG";

QImage load(const QString& path, double ratio) {
  QImage bitmap(path, pictureFormat);
  bitmap.setDevicePixelRatio(ratio);
  // By hand: Qt's conversion starts a thread for each processor where a picture is large, and those wake up
  // once more half a minute later.
  if (bitmap.format() == QImage::Format_ARGB32) {
    for (int y = 0; y < bitmap.height(); ++y) {
      auto* const line = reinterpret_cast<QRgb*>(bitmap.scanLine(y));
      std::transform(line, line + bitmap.width(), line, [](QRgb pixel) { return qPremultiply(pixel); });
    }
    bitmap.reinterpretAsFormat(drawnFormat);
  }
  return prepared(bitmap);
}

}  // namespace

Image::Image(const std::vector<QImage>& bitmaps) {
  for (const QImage& bitmap : bitmaps)
    if (!bitmap.isNull()) m_bitmaps.push_back({bitmap.devicePixelRatio(), {}, prepared(bitmap)});
  std::ranges::sort(m_bitmaps, {}, &Bitmap::ratio);
  if (!m_bitmaps.empty()) m_size = m_bitmaps.front().image.deviceIndependentSize();
}

Image::Image(const QImage& bitmap) : Image(std::vector<QImage>{bitmap}) {}

ImageRef Image::imageNamed(const QString& name) {
  initializeResources();
  // Bounded: only names of the program's own resources get in.
  static QHash<QString, ImageRef> loaded;
  if (const auto known = loaded.constFind(name); known != loaded.cend()) return *known;
  const QString path = u":/quillo/images/"_s + name;
  // Only the head of the file is read here.
  const QSize size = QImageReader(path + u".png"_s, pictureFormat).size();
  if (size.isEmpty()) return nullptr;
  std::vector<Bitmap> bitmaps{{1, path + u".png"_s, {}}};
  if (const QString fine = path + u"@2x.png"_s; QFile::exists(fine)) bitmaps.push_back({2, fine, {}});
  ImageRef image(new Image(QSizeF(size), std::move(bitmaps)));
  loaded.insert(name, image);
  return image;
}

const QImage& Image::read(Bitmap& bitmap) {
  if (!bitmap.file.isEmpty()) bitmap.image = load(std::exchange(bitmap.file, {}), bitmap.ratio);
  return bitmap.image;
}

std::vector<QImage> Image::bitmaps() const {
  std::vector<QImage> all;
  all.reserve(m_bitmaps.size());
  for (Bitmap& bitmap : m_bitmaps) all.push_back(read(bitmap));
  return all;
}

const QImage* Image::bitmapForRatio(double ratio) const {
  const auto bitmap = suiting(m_bitmaps, ratio, &Bitmap::ratio);
  return bitmap == m_bitmaps.end() ? nullptr : &read(*bitmap);
}

bool Image::isRead() const {
  return std::ranges::all_of(m_bitmaps, &QString::isEmpty, &Bitmap::file);
}

void Image::drawInRect(QPainter& painter, const QRectF& rect, const QRectF& fromRect, CompositingOperation operation,
                       double fraction, bool /*respectFlipped*/, QPainter::RenderHints hints) const {
  const QImage* bitmap = bitmapForRatio(deviceRatio(painter));
  if (!bitmap || rect.isEmpty()) return;
  QRectF part(QPointF(0, 0), QSizeF(bitmap->size()));
  if (!fromRect.isEmpty()) {
    const double ratio = bitmap->devicePixelRatio();
    part = QRectF(fromRect.x() * ratio, (m_size.height() - fromRect.y() - fromRect.height()) * ratio,
                  fromRect.width() * ratio, fromRect.height() * ratio);
  }
  painter.save();
  painter.setRenderHints(hints);
  painter.setCompositionMode(compositionMode(operation));
  painter.setOpacity(painter.opacity() * std::clamp(fraction, 0.0, 1.0));
  painter.drawImage(rect, *bitmap, part);
  painter.restore();
}

ImageRef imageWithFraction(const Image& image, double fraction) {
  std::vector<QImage> copies;
  for (const QImage& bitmap : image.bitmaps()) {
    QImage copy(bitmap.size(), bitmap.format());
    copy.setDevicePixelRatio(bitmap.devicePixelRatio());
    copy.fill(Qt::transparent);
    QPainter painter(&copy);
    painter.setOpacity(std::clamp(fraction, 0.0, 1.0));
    painter.drawImage(QPointF(0, 0), bitmap);
    painter.end();
    copies.push_back(copy);
  }
  return std::make_shared<Image>(copies);
}

const QImage* bitmapForRatio(const std::vector<QImage>& bitmaps, double ratio) {
  const auto bitmap = suiting(bitmaps, ratio, &QImage::devicePixelRatio);
  return bitmap == bitmaps.end() ? nullptr : &*bitmap;
}

double deviceRatio(const QPainter& painter) {
  const QTransform transform = painter.deviceTransform();
  return std::max(std::hypot(transform.m11(), transform.m12()), std::hypot(transform.m21(), transform.m22()));
}

QPainter::CompositionMode compositionMode(CompositingOperation operation) {
  switch (operation) {
    case CompositingOperation::Copy:
      return QPainter::CompositionMode_Source;
    case CompositingOperation::SourceOver:
      return QPainter::CompositionMode_SourceOver;
  }
  return QPainter::CompositionMode_SourceOver;
}

}  // namespace quillo
