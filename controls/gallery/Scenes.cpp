#include "controls/gallery/Scenes.h"

#include "controls/Fonts.h"

#include <QLabel>

namespace quillo {

using namespace Qt::StringLiterals;

const std::vector<Scene>& allScenes() {
  static const std::vector<Scene> scenes{
      {u"entry-panel"_s, makeEntryPanel},         {u"style-buttons"_s, makeStyleButtons},
      {u"picture-buttons"_s, makePictureButtons}, {u"nine-part"_s, makeNinePart},
      {u"small-views"_s, makeSmallViews},         {u"artwork"_s, makeArtwork},
  };
  return scenes;
}

QImage grabScene(const Scene& scene, Panel panel, double ratio) {
  const std::unique_ptr<QWidget> widget = scene.make(panel);
  QImage image((QSizeF(widget->size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(ratio);
  image.fill(Qt::transparent);
  widget->render(&image, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
  return image;
}

QColor panelColor(Panel panel) {
  return panel == Panel::Dark ? QColor(0x33, 0x36, 0x3c) : QColor(0xe9, 0xeb, 0xee);
}

std::unique_ptr<QWidget> makeCanvas(Panel panel, const QSize& size) {
  auto canvas = std::make_unique<QWidget>();
  canvas->setFixedSize(size);
  QPalette palette = canvas->palette();
  palette.setColor(QPalette::Window, panelColor(panel));
  canvas->setPalette(palette);
  canvas->setAutoFillBackground(true);
  return canvas;
}

void addCaption(QWidget& canvas, Panel panel, const QString& text, const QPoint& topLeft) {
  auto* label = new QLabel(text, &canvas);
  label->setFont(textFont(10));
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, panel == Panel::Dark ? QColor(0xa9, 0xad, 0xb5) : QColor(0x5c, 0x61, 0x6a));
  label->setPalette(palette);
  label->move(topLeft);
  label->adjustSize();
}

}  // namespace quillo
