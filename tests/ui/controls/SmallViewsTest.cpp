#include "controls/Button.h"
#include "controls/ColorViews.h"
#include "controls/QLScroller.h"
#include "tests/support/TestHome.h"

#include <QMenu>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

namespace quillo {
namespace {

QImage rendered(QWidget& widget, const QColor& behind, double ratio = 1) {
  QImage image((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(ratio);
  image.fill(behind);
  widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
  return image;
}

// 200 points high, of which the knob takes the half.
struct UprightScroller : QLScroller {
  UprightScroller() : QLScroller(Qt::Vertical) {
    setRange(0, 100);
    setPageStep(100);
    resize(scrollerWidth, 200);
  }
};

TEST(QLScrollerTest, DrawsThePillAndNothingElse) {
  for (const double ratio : {1.0, 1.5, 2.0}) {
    SCOPED_TRACE(ratio);
    UprightScroller scroller;
    EXPECT_EQ(scroller.knobRect().left(), 4.0);
    EXPECT_EQ(scroller.knobRect().right(), 11.0);
    EXPECT_FALSE(scroller.isOpaque());
    const QRectF knob = scroller.rectForKnob();
    const QImage image = rendered(scroller, Qt::transparent, ratio);
    EXPECT_EQ(qAlpha(image.pixel(qRound(2 * ratio), qRound(knob.center().y() * ratio))), 0);
    const QColor middle = image.pixelColor(qRound(7 * ratio), qRound(knob.center().y() * ratio));
    EXPECT_NEAR(middle.alphaF(), 0.5, 0.01);
    EXPECT_NEAR(middle.red(), 128, 2);
  }
}

TEST(QLScrollerTest, HorizontalKnobStandsNearTheLeftEndWhateverTheValue) {
  QLScroller scroller(Qt::Horizontal);
  scroller.setRange(0, 100);
  scroller.resize(200, QLScroller::scrollerWidth);
  for (const int value : {0, 50, 100}) {
    scroller.setValue(value);
    EXPECT_EQ(scroller.knobRect().left(), 4.0);
    EXPECT_EQ(scroller.knobRect().width(), 7.0);
    EXPECT_EQ(scroller.knobRect().height(), QLScroller::scrollerWidth);
  }
}

TEST(QLScrollerTest, KnobIsTakenHoldOfWhereItIsDrawn) {
  UprightScroller scroller;
  scroller.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&scroller));
  const QPoint start = scroller.rectForKnob().center().toPoint();
  QTest::mousePress(scroller.windowHandle(), Qt::LeftButton, {}, start);
  QTest::mouseMove(scroller.windowHandle(), start + QPoint(0, 49));
  QTest::mouseRelease(scroller.windowHandle(), Qt::LeftButton, {}, start + QPoint(0, 49));
  EXPECT_NEAR(scroller.value(), 50, 2);
  // Without arrows the ends of the bar are track: a click there moves by a page.
  scroller.setPageStep(10);
  QTest::mouseClick(scroller.windowHandle(), Qt::LeftButton, {}, QPoint(7, 198));
  EXPECT_NEAR(scroller.value(), 60, 2);
}

TEST(PlainColorViewTest, FillsOverWhatLiesBehind) {
  PlainColorView view;
  view.resize(10, 10);
  view.setColor(QColor(255, 0, 0, 128));
  EXPECT_EQ(rendered(view, Qt::white).pixelColor(5, 5), QColor(255, 127, 127));
  view.setColor(Qt::red);
  EXPECT_EQ(rendered(view, Qt::white).pixelColor(5, 5), QColor(Qt::red));
  EXPECT_FALSE(view.isOpaque()) << "not even in an opaque colour";
  view.setColor(QColor());
  EXPECT_EQ(rendered(view, Qt::white).pixelColor(5, 5), QColor(Qt::white));
}

TEST(ClearColorViewTest, MakesAHole) {
  ClearColorView view;
  view.resize(10, 10);
  EXPECT_EQ(qAlpha(rendered(view, Qt::red).pixel(5, 5)), 0);
}

TEST(ButtonTest, TheFocusRingIsTheKeyboardsAndOutlastsAMenu) {
  QWidget window;
  const Button first(&window);  // which has the focus of a new window
  Button button(&window);
  button.resize(40, 30);
  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  const QImage plain = rendered(button, Qt::black);
  button.setFocus(Qt::TabFocusReason);
  const QImage ringed = rendered(button, Qt::black);
  EXPECT_NE(ringed, plain);
  QMenu menu;
  menu.addAction(QStringLiteral("x"));
  menu.popup(QPoint(0, 0));
  menu.close();
  EXPECT_EQ(rendered(button, Qt::black), ringed);
  button.clearFocus();
  EXPECT_EQ(rendered(button, Qt::black), plain);
  button.setFocus(Qt::MouseFocusReason);
  EXPECT_EQ(rendered(button, Qt::black), plain);
}

}  // namespace
}  // namespace quillo
