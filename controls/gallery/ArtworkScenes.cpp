#include "controls/Fonts.h"
#include "controls/HoverButton.h"
#include "controls/NinePartScaledImage.h"
#include "controls/NinePartScaledImageView.h"
#include "controls/gallery/Scenes.h"

#include <QLabel>
#include <QPainter>

#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

class ImageView : public QWidget {
 public:
  ImageView(const QString& name, const QPoint& topLeft, QWidget* parent)
      : QWidget(parent), m_image(Image::imageNamed(name)) {
    if (m_image) setGeometry(QRect(topLeft, m_image->size().toSize()));
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    if (!m_image) return;
    QPainter painter(this);
    m_image->drawInRect(painter, rect());
  }

 private:
  ImageRef m_image;
};

// The window's body as the entry window will show it: enough of it to judge the controls in their place.
class PanelBody : public QWidget {
 public:
  using QWidget::QWidget;

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient slate(0, 0, 0, height());
    slate.setColorAt(0, QColor(0x3a, 0x3e, 0x45));
    slate.setColorAt(1, QColor(0x2a, 0x2d, 0x33));
    painter.setPen(QPen(QColor(0x1c, 0x1e, 0x22), 1));
    painter.setBrush(slate);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
  }
};

void addText(QWidget& parent, const QString& text, const QFont& font, const QColor& color, const QRect& frame) {
  auto* label = new QLabel(text, &parent);
  label->setFont(font);
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, color);
  label->setPalette(palette);
  label->setGeometry(frame);
}

void addButton(QWidget& parent, const QString& style, const QString& title, const QRect& frame) {
  auto* button = new HoverButton(&parent);
  button->setCellStyle(style);
  button->setTitle(title);
  button->setGeometry(frame);
}

// A body of 328 x 258 points in one of the two modes.
void addPanel(QWidget& canvas, const QPoint& topLeft, bool reminder) {
  auto* body = new PanelBody(&canvas);
  body->setGeometry(QRect(topLeft, QSize(328, 258)));
  new ImageView(reminder ? u"menubar-reminder"_s : u"menubar-new-entry"_s, {14, 12}, body);
  addText(*body, reminder ? u"Time to write"_s : u"New Entry"_s, textFont(13, QFont::DemiBold), Qt::white,
          {40, 14, 160, 20});
  new ImageView(u"menubar-settings"_s, {268, 13}, body);
  new ImageView(u"menubar-close"_s, {296, 13}, body);

  const int height = reminder ? 104 : 146;
  auto* box = new NinePartScaledImageView(body);
  box->setNinePartScaledImage(std::make_shared<NinePartScaledImage>(*Image::imageNamed(u"menubar-inputbox"_s),
                                                                    QPointF(5, 141), QPointF(295, 5)));
  box->setGeometry(13, 258 - 66 - height, 302, height);
  if (reminder) {
    addText(*body, u"Remind me again in"_s, textFont(12), QColor(0xb9, 0xbc, 0xc2), {13, 58, 130, 20});
    addButton(*body, u"dark"_s, u"1 Hour"_s, {146, 51, 82, 33});
    addButton(*body, u"dark"_s, u"1 Day"_s, {233, 51, 82, 33});
  } else {
    addText(*box, u"Walked the long way home along the river. The light was already gone."_s, textFont(15),
            QColor(51, 51, 51), {8, 7, 290, 80});
    new ImageView(u"menubar-location-pin"_s, {8, 128}, box);
    addText(*box, u"Berlin, Germany"_s, textFont(12), QColor(0x6b, 0x6f, 0x76), {23, 127, 200, 16});
  }
  new ImageView(u"menubar-location"_s, {13, 207}, body);
  new ImageView(reminder ? u"menubar-location-toggle-off"_s : u"menubar-location-toggle-on"_s, {33, 207}, body);
  addButton(*body, u"dark"_s, u"Open"_s, {123, 206, 92, 38});
  addButton(*body, u"blue"_s, u"Save"_s, {223, 206, 92, 38});
}

}  // namespace

std::unique_ptr<QWidget> makeArtwork(Panel panel) {
  auto canvas = makeCanvas(panel, {660, 250});
  const std::array small{u"menubar-black"_s,
                         u"menubar-white"_s,
                         u"menubar-red"_s,
                         u"menubar-new-entry"_s,
                         u"menubar-reminder"_s,
                         u"menubar-settings"_s,
                         u"menubar-close"_s,
                         u"menubar-save"_s,
                         u"menubar-open"_s,
                         u"menubar-location"_s,
                         u"menubar-location-pin"_s,
                         u"menubar-location-toggle-on"_s,
                         u"menubar-location-toggle-off"_s};
  int x = 16;
  for (const QString& name : small) {
    new ImageView(name, {x, 20}, canvas.get());
    x += 48;
  }
  const std::array large{u"menubar-button-blue"_s, u"menubar-button-blue-active"_s, u"menubar-button-dark"_s,
                         u"menubar-button-dark-active"_s};
  x = 16;
  for (const QString& name : large) {
    new ImageView(name, {x, 60}, canvas.get());
    x += 108;
  }
  new ImageView(u"logo-quillo"_s, {16, 120}, canvas.get());
  new ImageView(u"logo-maker"_s, {130, 140}, canvas.get());
  return canvas;
}

std::unique_ptr<QWidget> makeEntryPanel(Panel panel) {
  auto canvas = makeCanvas(panel, {740, 330});
  new ImageView(panel == Panel::Dark ? u"menubar-white"_s : u"menubar-black"_s, {180, 6}, canvas.get());
  new ImageView(u"menubar-red"_s, {548, 6}, canvas.get());
  addPanel(*canvas, {28, 40}, /*reminder=*/false);
  addPanel(*canvas, {384, 40}, /*reminder=*/true);
  return canvas;
}

}  // namespace quillo
