#include "controls/Image.h"
#include "controls/NinePartScaledImage.h"
#include "controls/NinePartScaledImageView.h"
#include "controls/gallery/Scenes.h"
#include "tests/support/TestHome.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillo {
namespace {

// Every pixel of its own colour, so that a picture moved or stretched by one pixel is another picture.
QImage patternBitmap(int width, int height, int ratio) {
  QImage bitmap(width * ratio, height * ratio, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < bitmap.height(); ++y) {
    for (int x = 0; x < bitmap.width(); ++x)
      bitmap.setPixel(x, y, qRgb(x * 9 % 256, y * 9 % 256, (x * 7 + y * 13) % 256));
  }
  bitmap.setDevicePixelRatio(ratio);
  return bitmap;
}

// 100 x 40 points at 1x and 2x.
const Image& patternSource() {
  static const Image source({patternBitmap(100, 40, 1), patternBitmap(100, 40, 2)});
  return source;
}

const QPointF topLeft(10, 30);
const QPointF bottomRight(90, 10);

QImage draw(const Image& image, const QRectF& rect, double ratio, const QSize& canvas,
            const QRectF& fromRect = QRectF(), QPainter::RenderHints hints = {}) {
  QImage target((QSizeF(canvas) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  target.setDevicePixelRatio(ratio);
  target.fill(Qt::transparent);
  QPainter painter(&target);
  painter.setRenderHints(hints);
  image.drawInRect(painter, rect, fromRect);
  painter.end();
  return target;
}

TEST(NinePartScaledImageTest, KeepsCornersAndStretchesTheRest) {
  const NinePartScaledImage image(patternSource(), topLeft, bottomRight);
  for (const int ratio : {1, 2}) {
    SCOPED_TRACE(ratio);
    const QImage& source = *patternSource().bitmapForRatio(ratio);
    // At the source's own size it is the source, whatever part is asked for.
    EXPECT_EQ(draw(image, {0, 0, 100, 40}, ratio, {100, 40}), source);
    EXPECT_EQ(draw(image, {0, 0, 100, 40}, ratio, {100, 40}, QRectF(20, 20, 3, 3)), source);

    const QImage large = draw(image, {5, 3, 250, 90}, ratio, {260, 100});
    const int corner = 10 * ratio;
    const auto part = [&](int x, int y) { return QRect(x * ratio, y * ratio, corner, corner); };
    EXPECT_EQ(large.copy(part(5, 3)), source.copy(part(0, 0)));
    EXPECT_EQ(large.copy(part(245, 3)), source.copy(part(90, 0)));
    EXPECT_EQ(large.copy(part(5, 83)), source.copy(part(0, 30)));
    EXPECT_EQ(large.copy(part(245, 83)), source.copy(part(90, 30)));
    // The upper edge is stretched across only: every row keeps its own green, but for the rounding of the stretching.
    for (int y = 0; y < corner; ++y) EXPECT_NEAR(qGreen(large.pixel(130 * ratio, 3 * ratio + y)), y * 9, 1);
    // The left edge is stretched down only: every column keeps its own red.
    for (int x = 0; x < corner; ++x) EXPECT_NEAR(qRed(large.pixel(5 * ratio + x, 45 * ratio)), x * 9, 1);
    // Nothing beside the rectangle.
    EXPECT_EQ(qAlpha(large.pixel(5 * ratio - 1, 45 * ratio)), 0);
    EXPECT_EQ(qAlpha(large.pixel(255 * ratio, 45 * ratio)), 0);
    EXPECT_EQ(qAlpha(large.pixel(130 * ratio, 93 * ratio)), 0);
  }
}

TEST(NinePartScaledImageTest, CornersKeepTheirPixelsAtABrokenScale) {
  const NinePartScaledImage image(patternSource(), topLeft, bottomRight);
  // Fifteen pixels a corner, made of the twenty of the finer source.
  constexpr double ratio = 1.5;
  constexpr int corner = 15;
  const QImage own = draw(image, {0, 0, 100, 40}, ratio, {100, 40});
  const QImage large = draw(image, {4, 2, 250, 90}, ratio, {260, 100});
  const QRect inLarge(6, 3, 375, 135);
  const auto corners = [](const QImage& drawn, const QRect& rect) {
    return QList<QImage>{drawn.copy(rect.x(), rect.y(), corner, corner),
                         drawn.copy(rect.right() + 1 - corner, rect.y(), corner, corner),
                         drawn.copy(rect.x(), rect.bottom() + 1 - corner, corner, corner),
                         drawn.copy(rect.right() + 1 - corner, rect.bottom() + 1 - corner, corner, corner)};
  };
  EXPECT_EQ(corners(large, inLarge), corners(own, own.rect()));
  // Nothing beside the rectangle.
  for (const QPoint point : {QPoint(5, 70), QPoint(381, 70), QPoint(190, 2), QPoint(190, 138)})
    EXPECT_EQ(qAlpha(large.pixel(point)), 0) << point.x() << ' ' << point.y();
}

TEST(NinePartScaledImageTest, PiecesMeetWithoutSeamsAtBrokenScales) {
  const NinePartScaledImage image(patternSource(), topLeft, bottomRight);
  for (const double ratio : {1.25, 1.5, 1.75}) {
    const QImage drawn = draw(image, {3.3, 2.7, 151.1, 77.7}, ratio, {160, 90}, {}, QPainter::Antialiasing);
    const QRect inside = QRectF(3.3 * ratio, 2.7 * ratio, 151.1 * ratio, 77.7 * ratio).toRect().adjusted(1, 1, -1, -1);
    int holes = 0;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
      for (int x = inside.left(); x <= inside.right(); ++x) holes += qAlpha(drawn.pixel(x, y)) != 255;
    }
    EXPECT_EQ(holes, 0) << "at " << ratio;
  }
}

TEST(NinePartScaledImageViewTest, FillsItselfAndDrawsNothingWithoutAnImage) {
  NinePartScaledImageView view;
  view.resize(200, 80);
  const auto shown = [&view] {
    QImage target(200, 80, QImage::Format_ARGB32_Premultiplied);
    target.fill(Qt::transparent);
    view.render(&target, QPoint(), QRegion(), QWidget::RenderFlags());
    return target;
  };
  const auto image = std::make_shared<NinePartScaledImage>(patternSource(), topLeft, bottomRight);
  view.setNinePartScaledImage(image);
  EXPECT_EQ(shown(), draw(*image, {0, 0, 200, 80}, 1, {200, 80}));
  view.setNinePartScaledImage(nullptr);
  EXPECT_EQ(qAlpha(shown().pixel(100, 40)), 0);
}

TEST(NinePartScaledImageTest, LooksTheSameWhenItIsCutOnlyOnceItIsDrawn) {
  auto source = std::make_shared<Image>(patternSource().bitmaps());
  const std::weak_ptr<Image> kept = source;
  const NinePartScaledImage later(std::move(source), topLeft, bottomRight);
  EXPECT_EQ(later.size(), QSizeF(100, 40));
  EXPECT_EQ(draw(later, {0, 0, 200, 80}, 1, {200, 80}),
            draw(NinePartScaledImage(patternSource(), topLeft, bottomRight), {0, 0, 200, 80}, 1, {200, 80}));
  EXPECT_TRUE(kept.expired()) << "the source is not needed any more";
}

TEST(ImageTest, DrawsThePartAskedForFromTheBottomLeft) {
  QImage bitmap(20, 10, QImage::Format_ARGB32_Premultiplied);
  bitmap.fill(Qt::red);
  QPainter(&bitmap).fillRect(0, 8, 4, 2, Qt::blue);  // the lower left corner
  const Image image(bitmap);
  const QImage drawn = draw(image, {0, 0, 8, 4}, 1, {8, 4}, QRectF(0, 0, 4, 2));
  for (int x = 0; x < 8; ++x) EXPECT_EQ(drawn.pixel(x, 3), QColor(Qt::blue).rgba());
}

TEST(ImageTest, DimmedCopyKeepsSizeAndScales) {
  const ImageRef dimmed = imageWithFraction(patternSource(), 0.5);
  EXPECT_EQ(dimmed->size(), patternSource().size());
  ASSERT_EQ(dimmed->bitmaps().size(), 2U);
  for (const QImage& bitmap : dimmed->bitmaps()) EXPECT_NEAR(qAlpha(bitmap.pixel(3, 3)), 128, 1);
}

using namespace Qt::StringLiterals;

// Of two colours, 0 to 765.
int difference(QRgb a, QRgb b) {
  return std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
}

TEST(ArtworkTest, APictureIsLoadedOnceAndAtBothScales) {
  const ImageRef image = Image::imageNamed(u"menubar-new-entry"_s);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->size(), QSizeF(22, 22));
  ASSERT_EQ(image->bitmaps().size(), 2U);
  EXPECT_EQ(image->bitmaps()[1].size(), QSize(44, 44));
  EXPECT_EQ(Image::imageNamed(u"menubar-new-entry"_s), image);
  EXPECT_EQ(Image::imageNamed(u"no-such-picture"_s), nullptr);
}

TEST(ArtworkTest, APictureThatIsCutScaleByScaleLooksAsOneCutAtOnce) {
  const ImageRef image = Image::imageNamed(u"menubar-inputbox"_s);
  ASSERT_TRUE(image);
  const QPointF from(5, 141);
  const QPointF to(295, 5);
  const NinePartScaledImage later(image, from, to);
  QList<QImage> drawn;
  for (const int ratio : {1, 2, 1}) drawn << draw(later, {0, 0, 310, 90}, ratio, {310, 90});
  const NinePartScaledImage atOnce(*image, from, to);
  for (const int i : {0, 1, 2}) EXPECT_EQ(drawn[i], draw(atOnce, {0, 0, 310, 90}, i == 1 ? 2 : 1, {310, 90})) << i;
}

// The mean difference of two pictures' colours, 0 to 255.
double meanDifference(const QImage& a, const QImage& b) {
  qint64 total = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) total += difference(a.pixel(x, y), b.pixel(x, y));
  }
  return static_cast<double>(total) / (3.0 * a.width() * a.height());
}

TEST(SceneTest, LooksTheSameAtBothScales) {
  for (const Scene& scene : allScenes()) {
    for (const Panel panel : {Panel::Dark, Panel::Light}) {
      SCOPED_TRACE(scene.name.toStdString());
      const QImage once = grabScene(scene, panel, 1);
      QImage twice = grabScene(scene, panel, 2);
      ASSERT_EQ(twice.size(), once.size() * 2);
      twice.setDevicePixelRatio(1);
      const QImage halved = twice.scaled(once.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
      // Text and hairlines differ a little; a picture of the wrong scale or in the wrong place differs a lot.
      EXPECT_LT(meanDifference(once, halved), 3.0);
      QImage blank = once;
      blank.fill(panelColor(panel));
      EXPECT_GT(meanDifference(once, blank), 1.0) << "nothing on it";
    }
  }
}

}  // namespace
}  // namespace quillo
