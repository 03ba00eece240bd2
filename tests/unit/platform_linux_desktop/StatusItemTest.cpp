#include "platform/linux/desktop/StatusImage.h"
#include "platform/linux/desktop/StatusItemAnchor.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

const QRectF hd(0, 0, 1920, 1080);

TEST(StatusItemAnchor, TakesTheIconThenTheClickThenTheCorner) {
  const QRectF second(1920, 0, 800, 600);
  const QList<ScreenArea> topPanel = {{hd, QRectF(0, 28, 1920, 1052), 1}, {second, second, 1}};
  const QRectF corner(1898, 3, 22, 22);
  const struct {
    const char* name;
    std::optional<QRectF> icon;
    std::optional<QPointF> click;
    QList<ScreenArea> screens;
    QRectF expected;
  } cases[] = {
      {"icon", QRectF(1000, 3, 24, 24), QPointF(5, 5), topPanel, QRectF(1000, 3, 24, 24)},
      {"icon left on a screen that is gone", QRectF(5000, 3, 22, 22), QPointF(500, 14), topPanel,
       QRectF(489, 3, 22, 22)},
      {"click at the last pixel", {}, QPointF(1919, 1079), topPanel, QRectF(1908, 1068, 22, 22)},
      {"nothing known", {}, {}, topPanel, corner},
      {"no panel", {}, {}, {{hd, hd, 1}}, QRectF(1898, 0, 22, 22)},
      {"panel at the bottom", {}, {}, {{hd, QRectF(0, 0, 1920, 1040), 1}}, QRectF(1898, 1049, 22, 22)},
      {"panel at the left", {}, {}, {{hd, QRectF(60, 0, 1860, 1080), 1}}, QRectF(19, 1058, 22, 22)},
      {"panel thinner than an icon", {}, {}, {{hd, QRectF(0, 10, 1920, 1070), 1}}, QRectF(1898, 0, 22, 22)},
      {"panel on the second screen only",
       {},
       {},
       {{hd, hd, 1}, {second, QRectF(1920, 0, 800, 570), 1}},
       QRectF(2698, 574, 22, 22)},
      {"no screen", QRectF(0, 0, 22, 22), QPointF(0, 0), {}, QRectF()},
  };
  for (const auto& c : cases) EXPECT_EQ(statusItemAnchor(c.icon, c.click, c.screens), c.expected) << c.name;
}

TEST(StatusItemAnchor, TurnsPixelsIntoPointsOfTheScreenTheyAreOn) {
  // A fine screen of 2560 pixels, and an ordinary one at its right: each keeps its corner in pixels.
  const QList<ScreenArea> screens = {{QRectF(0, 0, 1280, 800), QRectF(), 2},
                                     {QRectF(2560, 0, 1920, 1080), QRectF(), 1}};
  EXPECT_EQ(globalRectOfPixels(QRectF(2401, 6, 44, 44), screens), QRectF(1200.5, 3, 22, 22));
  EXPECT_EQ(globalRectOfPixels(QRectF(4000, 6, 24, 24), screens), QRectF(4000, 6, 24, 24));
  EXPECT_EQ(globalRectOfPixels(QRectF(9000, 6, 24, 24), screens), QRectF(9000, 6, 24, 24));
  EXPECT_EQ(globalRectOfPixels(QRectF(1, 2, 3, 4), {}), QRectF(1, 2, 3, 4));
  const QList<ScreenArea> fractional = {{QRectF(0, 0, 1280, 720), QRectF(), 1.5}};
  EXPECT_EQ(globalRectOfPixels(QRectF(1881, 3, 33, 33), fractional), QRectF(1254, 2, 22, 22));
  for (const auto& list : {screens, fractional})
    EXPECT_EQ(globalRectOfPixels(pixelsOfGlobalRect(QRectF(600, 3, 22, 22), list), list), QRectF(600, 3, 22, 22));
}

TEST(StatusItemAnchor, FindsThePanelAmongSeveralScreens) {
  const QRectF second(1920, 0, 800, 600);
  const QList<ScreenArea> screens = {{hd, hd, 1}, {second, second, 1}};
  const struct {
    const char* name;
    QList<QRect> panels;
    QRectF strip;
  } cases[] = {
      {"none", {}, QRectF(0, 0, 1920, 0)},
      {"at the top", {{0, 0, 1920, 28}}, QRectF(0, 0, 1920, 28)},
      {"short, at the bottom of the second", {{2400, 572, 320, 28}}, QRectF(1920, 572, 800, 28)},
      {"two, of which the first screen's counts", {{1920, 0, 800, 40}, {0, 1060, 1920, 20}}, QRectF(0, 1060, 1920, 20)},
      {"floating, or on no screen", {{100, 100, 300, 28}, {5000, 0, 100, 20}}, QRectF(0, 0, 1920, 0)},
  };
  for (const auto& c : cases) EXPECT_EQ(panelStrip(withoutPanels(screens, c.panels)), c.strip) << c.name;
  EXPECT_TRUE(panelStrip({}).isEmpty());
}

TEST(StatusItemAnchor, LooksAtAPanelLineByLine) {
  const QList<QRect> lying = linesAlong(QRect(0, 772, 1280, 28));
  ASSERT_EQ(lying.size(), 5);
  EXPECT_EQ(lying.front(), QRect(0, 774, 1280, 1));
  EXPECT_EQ(lying.back(), QRect(0, 797, 1280, 1));
  EXPECT_EQ(linesAlong(QRect(10, 0, 3, 800)),
            (QList<QRect>{QRect(10, 0, 1, 800), QRect(11, 0, 1, 800), QRect(12, 0, 1, 800)}));
  EXPECT_TRUE(linesAlong(QRect(0, 0, 1920, 0)).isEmpty());
}

TEST(StatusImage, TintsTheShapeAndPutsTheHighlightBehindIt) {
  QImage image(11, 11, QImage::Format_ARGB32);
  image.fill(Qt::red);
  StatusImageStyle style;
  const auto at = [&](int x, int y) { return statusImage(image, {11, 22}, 2, style).pixelColor(x, y); };
  // The image has its own pixels and stands in the middle of 22 by 44.
  EXPECT_EQ(at(11, 22), QColor(Qt::red));
  EXPECT_EQ(at(11, 15).alpha(), 0);
  style.tint = QColor(Qt::white);
  EXPECT_EQ(at(11, 22), QColor(Qt::white));
  EXPECT_EQ(at(11, 15).alpha(), 0);
  // Two pixels of another colour on each side, and no more.
  style.outline = QColor(Qt::black);
  EXPECT_EQ(at(11, 22), QColor(Qt::white));
  EXPECT_EQ(at(11, 15), QColor(Qt::black));
  EXPECT_EQ(at(4, 15), QColor(Qt::black));
  EXPECT_EQ(at(11, 13).alpha(), 0);
  style.outline.reset();
  style.isHighlighted = true;
  style.highlight = QColor(Qt::black);
  EXPECT_EQ(at(11, 22), QColor(Qt::white));
  EXPECT_GT(at(11, 15).alpha(), 0);
  EXPECT_LT(at(11, 15).alpha(), 128);

  image = QImage(200, 100, QImage::Format_ARGB32);
  image.fill(Qt::red);
  style = {};
  // Made smaller to 22 by 11 and not cut off.
  EXPECT_EQ(at(1, 22), QColor(Qt::red));
  EXPECT_EQ(at(11, 10).alpha(), 0);
}

TEST(StatusImage, ReadsOnItsBackground) {
  EXPECT_EQ(readableOn(QColor(0x20, 0x20, 0x20)), QColor(Qt::white));
  EXPECT_EQ(readableOn(QColor(0xf0, 0xf0, 0xf0)), QColor(Qt::black));
  // Equally strong, but green looks light and blue looks dark.
  EXPECT_EQ(readableOn(QColor(0, 255, 0)), QColor(Qt::black));
  EXPECT_EQ(readableOn(QColor(0, 0, 255)), QColor(Qt::white));
  EXPECT_EQ(readableOnMost({0xffffffff, 0xff000000, 0xffffffff, 0xffffffff, 0xff000000}), QColor(Qt::black));
  EXPECT_EQ(readableOnMost({}), std::nullopt);
}

}  // namespace
}  // namespace quillo
