#include "controls/ButtonCellStyles.h"
#include "controls/HoverButton.h"
#include "controls/NinePartScaledImage.h"
#include "tests/support/TestHome.h"

#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

ImageRef colorImage(const QColor& color) {
  QImage bitmap(8, 8, QImage::Format_ARGB32_Premultiplied);
  bitmap.fill(color);
  return std::make_shared<Image>(bitmap);
}

const TextAttributes standardLook{QFont(), QColor(200, 200, 200), std::nullopt};
const TextAttributes activeLook{QFont(), QColor(255, 255, 255), std::nullopt};

// A window with one button that has every picture and look, driven by the pointer as a window system would.
class HoverButtonTest : public testing::Test {
 protected:
  HoverButtonTest() {
    window.resize(200, 120);
    button = new HoverButton(&window);
    button->setGeometry(40, 30, 100, 40);
    HoverButtonCell& cell = button->cell();
    cell.setStandardImage(standard);
    cell.setHoverImage(hover);
    cell.setActiveImage(active);
    cell.setDisabledImage(disabled);
    cell.setStandardBackground(colorImage(QColor(10, 20, 30)));
    cell.setActiveBackground(colorImage(QColor(40, 50, 60)));
    cell.setStandardStringAttrs(standardLook);
    cell.setActiveStringAttrs(activeLook);
    movePointer(outside);
    window.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    draw();
  }

  HoverButtonCell& cell() { return button->cell(); }
  void draw() { button->grab(); }
  // Of the button, in points.
  QColor colorAt(int x, int y) {
    const QImage image = button->grab().toImage();
    return image.pixelColor((QPointF(x, y) * image.devicePixelRatio()).toPoint());
  }
  QColor background() { return colorAt(3, 3); }
  QColor titleColor() { return cell().attributedTitle().attributes.foregroundColor; }
  void movePointer(const QPoint& point) {
    window.winId();
    QTest::mouseMove(window.windowHandle(), point);
    QCoreApplication::processEvents();
  }
  void press(const QPoint& point) { QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, point); }
  void release(const QPoint& point) { QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, point); }

  const QPoint inside{60, 50};
  const QPoint outside{10, 10};
  const ImageRef standard{colorImage(Qt::red)};
  const ImageRef hover{colorImage(Qt::green)};
  const ImageRef active{colorImage(Qt::blue)};
  const ImageRef disabled{colorImage(Qt::gray)};
  QWidget window;
  HoverButton* button{nullptr};
};

TEST_F(HoverButtonTest, PointerSwapsPictureAndTitleLook) {
  button->setTitle(u"Save"_s);
  EXPECT_EQ(cell().image(), standard);
  EXPECT_EQ(titleColor(), standardLook.foregroundColor);
  movePointer(inside);
  EXPECT_EQ(cell().image(), hover);
  EXPECT_EQ(titleColor(), activeLook.foregroundColor);
  movePointer(outside);
  EXPECT_EQ(cell().image(), standard);
  EXPECT_EQ(titleColor(), standardLook.foregroundColor);
}

TEST_F(HoverButtonTest, PressingSwapsOnlyTheBackground) {
  int clicks = 0;
  QObject::connect(button, &QAbstractButton::clicked, button, [&clicks] { ++clicks; });
  movePointer(inside);
  EXPECT_EQ(background(), QColor(10, 20, 30));
  press(inside);
  EXPECT_EQ(background(), QColor(40, 50, 60));
  EXPECT_EQ(cell().image(), hover);
  EXPECT_EQ(colorAt(50, 20), QColor(Qt::green)) << "the hover picture stays";
  release(inside);
  EXPECT_EQ(background(), QColor(10, 20, 30));
  EXPECT_EQ(clicks, 1);
  // A press that is dragged away and let go there is no click.
  press(inside);
  movePointer(outside);
  release(outside);
  EXPECT_EQ(clicks, 1);
  EXPECT_FALSE(cell().isHighlighted());
}

TEST_F(HoverButtonTest, OnStateShowsAlternatesAndKeepsTheLookOfTheLastEvent) {
  button->setCheckable(true);
  button->setTitle(u"Off"_s);
  movePointer(inside);
  press(inside);
  release(inside);
  EXPECT_EQ(cell().state(), CellState::On);
  EXPECT_EQ(colorAt(50, 4), QColor(Qt::blue)) << "above the title";
  EXPECT_EQ(background(), QColor(40, 50, 60));
  EXPECT_EQ(titleColor(), activeLook.foregroundColor);
  movePointer(outside);
  EXPECT_EQ(titleColor(), standardLook.foregroundColor) << "on, but the pointer left last";
  cell().performClick();
  EXPECT_EQ(cell().state(), CellState::Off);
  EXPECT_EQ(titleColor(), standardLook.foregroundColor);
  cell().performClick();
  EXPECT_TRUE(button->isChecked());
  EXPECT_EQ(titleColor(), activeLook.foregroundColor) << "a click from the program follows the state";
}

TEST_F(HoverButtonTest, DisabledIgnoresThePointer) {
  button->setEnabled(false);
  EXPECT_EQ(cell().image(), disabled);
  movePointer(inside);
  movePointer(outside);
  EXPECT_EQ(cell().image(), disabled);
  cell().performClick();
  EXPECT_EQ(cell().image(), disabled);
  button->setEnabled(true);
  EXPECT_EQ(cell().image(), standard);
  cell().setDisabledImage(nullptr);
  button->setEnabled(false);
  EXPECT_EQ(cell().image(), standard);
}

TEST_F(HoverButtonTest, DisabledTitleIsNotDimmed) {
  button->cell().setStandardBackground(nullptr);
  button->cell().setDisabledImage(nullptr);
  button->cell().setStandardImage(nullptr);
  button->setTitle(u"MMMM"_s);
  const QImage enabled = button->grab().toImage();
  button->setEnabled(false);
  EXPECT_EQ(button->grab().toImage(), enabled);
}

TEST_F(HoverButtonTest, TrackingAreaFollowsTheFrame) {
  const TrackingArea* first = cell().trackingArea();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(cell().trackingView(), button);
  draw();
  EXPECT_EQ(cell().trackingArea(), first);
  movePointer(inside);
  button->resize(60, 40);
  draw();
  EXPECT_EQ(cell().trackingArea()->rect(), QRectF(0, 0, 60, 40));
  EXPECT_EQ(cell().image(), hover);
  movePointer(outside);
  EXPECT_EQ(cell().image(), standard) << "leaving the new frame is told";
}

TEST_F(HoverButtonTest, ShownAgainOrMovedStartsAtRest) {
  movePointer(inside);
  ASSERT_EQ(cell().image(), hover);
  window.hide();
  movePointer(outside);
  window.show();
  EXPECT_EQ(cell().image(), standard);

  movePointer(inside);
  ASSERT_EQ(cell().image(), hover);
  QWidget other;
  button->setParent(&other);
  EXPECT_EQ(cell().image(), standard);
}

// What was drawn once is kept, so each change has to reach what is shown.
TEST_F(HoverButtonTest, ShowsEachChangeOfTheCell) {
  button->setTitle(u"Save"_s);
  const auto shown = [this] { return button->grab().toImage(); };
  EXPECT_EQ(shown(), shown());
  const std::vector<std::pair<const char*, std::function<void()>>> changes{
      {"title", [this] { button->setTitle(u"Keep"_s); }},
      {"look of the title", [this] { cell().setStandardStringAttrs(activeLook); }},
      {"picture", [this] { cell().setStandardImage(hover); }},
      {"background", [this] { cell().setStandardBackground(colorImage(Qt::yellow)); }},
      {"pressed", [this] { cell().setHighlighted(true); }},
      {"background when pressed", [this] { cell().setActiveBackground(colorImage(Qt::cyan)); }},
      {"disabled", [this] { button->setEnabled(false); }},
      {"size", [this] { button->resize(120, 40); }},
      {"another cell", [this] { button->setCell(std::make_unique<DarkButtonCell>()); }}};
  for (const auto& [what, change] : changes) {
    const QImage before = shown();
    change();
    EXPECT_NE(shown(), before) << what;
  }
}

TEST_F(HoverButtonTest, CellsComeAndGoWithTheButton) {
  movePointer(inside);
  button->setCell(std::make_unique<HoverButtonCell>(u"New"_s));  // its tracking area goes with the old cell
  movePointer(outside);
  EXPECT_EQ(button->title(), u"New"_s);
  delete button;
  movePointer(inside);
}

TEST(ButtonCellStylesTest, KeepTheCornersOfTheirPictures) {
  const struct {
    QString style, picture, hoverPicture;
    QColor textColor;
  } cases[] = {
      {u"blue"_s, u"menubar-button-blue"_s, u"menubar-button-blue-active"_s, QColor(255, 255, 255)},
      {u"dark"_s, u"menubar-button-dark"_s, u"menubar-button-dark-active"_s, QColor(226, 227, 230)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.style.toStdString());
    HoverButton button;
    button.setCellStyle(c.style);
    button.setTitle(u"Save"_s);
    EXPECT_EQ(button.cell().attributedTitle().attributes.foregroundColor.rgba(), c.textColor.rgba());
    EXPECT_EQ(button.cell().attributedTitle().attributes.font.pixelSize(), 12);
    button.resize(240, 34);
    const auto cornerOfPicture = [](const QString& name) {
      return Image::imageNamed(name)->bitmaps()[0].copy(0, 0, 14, 14);
    };
    const auto corner = [&button] {
      QImage image(button.size(), QImage::Format_ARGB32_Premultiplied);
      image.fill(Qt::transparent);
      button.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
      return image.copy(0, 0, 14, 14);
    };
    EXPECT_EQ(corner(), cornerOfPicture(c.picture));
    button.cell().mouseEntered();
    EXPECT_EQ(corner(), cornerOfPicture(c.hoverPicture));
  }
}

TEST(ButtonCellStylesTest, ComeFromAnInterfaceFileInAnyOrder) {
  // The order of the properties in the file is not ours to choose.
  HoverButton textFirst;
  textFirst.setText(u"Save & Close"_s);
  ASSERT_TRUE(textFirst.setProperty("cellStyle", u"blue"_s));
  HoverButton styleFirst;
  styleFirst.setProperty("cellStyle", u"blue"_s);
  styleFirst.setProperty("text", u"Save & Close"_s);
  for (HoverButton* button : {&textFirst, &styleFirst}) {
    EXPECT_EQ(button->title(), u"Save & Close"_s);
    EXPECT_EQ(button->cell().attributedTitle().attributes, button->cell().standardStringAttrs());
    EXPECT_NE(dynamic_cast<BlueOnDarkButtonCell*>(&button->cell()), nullptr);
    EXPECT_TRUE(button->shortcut().isEmpty());
  }
}

}  // namespace
}  // namespace quillo
