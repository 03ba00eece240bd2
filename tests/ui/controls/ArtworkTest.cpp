#include "controls/Image.h"
#include "controls/gallery/Scenes.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillo {
namespace {

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
