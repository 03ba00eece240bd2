#include "controls/ButtonCellStyles.h"
#include "controls/ColorViews.h"
#include "controls/CustomCursorButton.h"
#include "controls/Fonts.h"
#include "controls/HoverButton.h"
#include "controls/NinePartScaledImage.h"
#include "controls/NinePartScaledImageView.h"
#include "controls/QLScroller.h"
#include "controls/gallery/Scenes.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QPainter>

#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

enum class Look { Rest, Hover, Pressed, On, OnHover, Disabled };

constexpr std::array looks{Look::Rest, Look::Hover, Look::Pressed, Look::On, Look::OnHover, Look::Disabled};

QString nameOfLook(Look look) {
  switch (look) {
    case Look::Rest:
      return u"rest"_s;
    case Look::Hover:
      return u"hover"_s;
    case Look::Pressed:
      return u"pressed"_s;
    case Look::On:
      return u"on"_s;
    case Look::OnHover:
      return u"on, hover"_s;
    case Look::Disabled:
      return u"disabled"_s;
  }
  return {};
}

void setLook(HoverButton& button, Look look) {
  button.setCheckable(true);
  button.setChecked(look == Look::On || look == Look::OnHover);
  button.setEnabled(look != Look::Disabled);
  if (look == Look::Hover || look == Look::OnHover || look == Look::Pressed) button.cell().mouseEntered();
  button.cell().setHighlighted(look == Look::Pressed);
}

HoverButton* addStyleButton(QWidget& canvas, const QString& style, const QString& title, const QRect& frame) {
  auto* button = new HoverButton(&canvas);
  button->setCellStyle(style);
  button->setTitle(title);
  button->setGeometry(frame);
  return button;
}

// A rounded body in one colour, the way a window would give a cell its backgrounds.
ImageRef bodyImage(const QColor& color) {
  std::vector<QImage> bitmaps;
  for (const int ratio : {1, 2}) {
    QImage bitmap(24 * ratio, 24 * ratio, QImage::Format_ARGB32_Premultiplied);
    bitmap.setDevicePixelRatio(ratio);
    bitmap.fill(Qt::transparent);
    QPainter painter(&bitmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(0, 0, 24, 24), 5, 5);
    painter.end();
    bitmaps.push_back(bitmap);
  }
  return std::make_shared<NinePartScaledImage>(Image(bitmaps), QPointF(8, 16), QPointF(16, 8));
}

// Diagonal stripes, to see what shows through.
class StripedView : public QWidget {
 public:
  using QWidget::QWidget;

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0xfb, 0xfa, 0xf7));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xc3, 0xca, 0xd6), 6));
    for (int x = -height(); x < width(); x += 18) painter.drawLine(x, height(), x + height(), 0);
  }
};

}  // namespace

std::unique_ptr<QWidget> makeStyleButtons(Panel panel) {
  auto canvas = makeCanvas(panel, {660, 250});
  int x = 16;
  for (const Look look : looks) {
    addCaption(*canvas, panel, nameOfLook(look), {x, 10});
    setLook(*addStyleButton(*canvas, u"blue"_s, u"Save"_s, {x, 30, 92, 33}), look);
    setLook(*addStyleButton(*canvas, u"dark"_s, u"Open"_s, {x, 72, 92, 33}), look);
    x += 106;
  }
  addCaption(*canvas, panel, u"any width, any height"_s, {16, 120});
  addStyleButton(*canvas, u"blue"_s, u"Save and Open"_s, {16, 140, 180, 33});
  addStyleButton(*canvas, u"dark"_s, u"1 Hour"_s, {206, 140, 82, 33});
  addStyleButton(*canvas, u"dark"_s, u"30 Minutes"_s, {296, 140, 100, 38});
  addStyleButton(*canvas, u"blue"_s, u"Save"_s, {410, 140, 120, 60});
  addCaption(*canvas, panel, u"too small for the corners"_s, {16, 190});
  addStyleButton(*canvas, u"blue"_s, {}, {16, 210, 50, 33});
  addStyleButton(*canvas, u"dark"_s, {}, {76, 210, 24, 33});
  addStyleButton(*canvas, u"dark"_s, {}, {110, 210, 92, 20});
  return canvas;
}

std::unique_ptr<QWidget> makePictureButtons(Panel panel) {
  auto canvas = makeCanvas(panel, {660, 250});
  const ImageRef rest = bodyImage(QColor(0x4c, 0x50, 0x58));
  const ImageRef active = bodyImage(QColor(0x2f, 0x7d, 0xd8));
  int x = 16;
  for (const Look look : looks) {
    addCaption(*canvas, panel, nameOfLook(look), {x, 10});
    auto* button = new HoverButton(canvas.get());
    auto cell = std::make_unique<HoverButtonCell>(Image::imageNamed(u"menubar-settings"_s),
                                                  Image::imageNamed(u"menubar-new-entry"_s));
    cell->setHoverImage(Image::imageNamed(u"menubar-open"_s));
    cell->setDisabledImage(Image::imageNamed(u"menubar-close"_s));
    cell->setStandardBackground(rest);
    cell->setActiveBackground(active);
    button->setCell(std::move(cell));
    button->setGeometry(x, 30, 60, 44);
    setLook(*button, look);

    auto* titled = new HoverButton(canvas.get());
    titled->cell().setStandardBackground(rest);
    titled->cell().setActiveBackground(active);
    titled->cell().setStandardStringAttrs(TextAttributes{textFont(12), QColor(0xc8, 0xcb, 0xd1), std::nullopt});
    titled->cell().setActiveStringAttrs(TextAttributes{textFont(12, QFont::Medium), Qt::white, std::nullopt});
    titled->setTitle(u"Title"_s);
    titled->cell().setAlternateTitle(u"Alternate"_s);
    titled->setGeometry(x, 90, 80, 34);
    setLook(*titled, look);

    auto* toggle = new HoverButton(canvas.get());
    const ImageRef off = Image::imageNamed(u"menubar-location-toggle-off"_s);
    auto toggleCell = std::make_unique<HoverButtonCell>(off, Image::imageNamed(u"menubar-location-toggle-on"_s));
    toggleCell->setHoverImage(off);
    toggle->setCell(std::move(toggleCell));
    toggle->setGeometry(x, 140, 40, 24);
    setLook(*toggle, look);
    x += 106;
  }
  addCaption(*canvas, panel, u"plain, dimmed, and with the keyboard's ring"_s, {16, 180});
  auto* plain = new HoverButton(canvas.get());
  plain->setImageName(u"menubar-close"_s);
  plain->setGeometry(16, 200, 28, 28);
  auto* dimmed = new HoverButton(canvas.get());
  dimmed->cell().setStandardImage(imageWithFraction(*Image::imageNamed(u"menubar-settings"_s), 0.5));
  dimmed->setGeometry(50, 200, 28, 28);
  auto* focused = addStyleButton(*canvas, u"dark"_s, u"Focused"_s, {100, 200, 92, 33});
  QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
  QCoreApplication::sendEvent(focused, &focus);
  return canvas;
}

std::unique_ptr<QWidget> makeNinePart(Panel panel) {
  auto canvas = makeCanvas(panel, {660, 330});
  const ImageRef box = std::make_shared<NinePartScaledImage>(*Image::imageNamed(u"menubar-inputbox"_s), QPointF(5, 141),
                                                             QPointF(295, 5));
  const std::array frames{QRect(16, 30, 302, 146),  QRect(334, 30, 302, 104), QRect(16, 200, 120, 40),
                          QRect(150, 200, 40, 110), QRect(210, 200, 10, 10),  QRect(240, 200, 7, 30),
                          QRect(270, 200, 60, 6),   QRect(350, 200, 3, 3)};
  for (const QRect& frame : frames) {
    auto* view = new NinePartScaledImageView(canvas.get());
    view->setNinePartScaledImage(box);
    view->setGeometry(frame);
  }
  addCaption(*canvas, panel, u"302 x 146"_s, {16, 10});
  addCaption(*canvas, panel, u"302 x 104"_s, {334, 10});
  addCaption(*canvas, panel, u"smaller, down to less than the corners"_s, {16, 182});
  return canvas;
}

std::unique_ptr<QWidget> makeSmallViews(Panel panel) {
  auto canvas = makeCanvas(panel, {660, 250});
  addCaption(*canvas, panel, u"scrollers"_s, {16, 10});
  auto* striped = new StripedView(canvas.get());
  striped->setGeometry(16, 30, 190, 160);
  for (const auto& [x, value] : {std::pair(10, 0), std::pair(40, 50), std::pair(70, 100)}) {
    auto* scroller = new QLScroller(Qt::Vertical, striped);
    scroller->setRange(0, 100);
    scroller->setPageStep(60);
    scroller->setValue(value);
    scroller->setGeometry(x, 0, QLScroller::scrollerWidth, 130);
  }
  auto* horizontal = new QLScroller(Qt::Horizontal, striped);
  horizontal->setRange(0, 100);
  horizontal->setGeometry(10, 140, 170, QLScroller::scrollerWidth);

  addCaption(*canvas, panel, u"plain colour: opaque, half, none"_s, {226, 10});
  auto* behind = new StripedView(canvas.get());
  behind->setGeometry(226, 30, 190, 70);
  int x = 10;
  for (const QColor& color : {QColor(0xd9, 0x48, 0x3b), QColor(0x2a, 0x74, 0xcf, 0x80), QColor()}) {
    auto* plain = new PlainColorView(behind);
    plain->setColor(color);
    plain->setGeometry(x, 10, 50, 50);
    x += 60;
  }
  addCaption(*canvas, panel, u"clear colour: a hole in the window"_s, {226, 110});
  auto* around = new StripedView(canvas.get());
  around->setGeometry(226, 130, 190, 60);
  auto* clear = new ClearColorView(around);
  clear->setGeometry(20, 10, 150, 40);

  addCaption(*canvas, panel, u"cursor buttons"_s, {440, 10});
  auto* link = new CustomCursorButton(canvas.get());
  link->buttonCell().setAttributedTitle({u"Legal"_s, {textFont(12), QColor(6, 102, 133), std::nullopt}});
  link->setCustomCursor(QCursor(Qt::PointingHandCursor));
  link->setGeometry(440, 30, 60, 24);
  x = 440;
  for (const QString& name : {u"logo-quillo"_s, u"logo-maker"_s}) {
    auto* logo = new CustomCursorButton(canvas.get());
    logo->setImageName(name);
    logo->setCustomCursor(QCursor(Qt::PointingHandCursor));
    logo->setGeometry(x, 64, 96, 96);
    x += 106;
  }
  return canvas;
}

}  // namespace quillo
