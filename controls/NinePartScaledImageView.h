#pragma once

#include "controls/CachedDrawing.h"
#include "controls/Image.h"

#include <QWidget>

namespace quillo {

// Shows a picture, meant to be a nine-part one, over all of itself. Has no background of its own.
class NinePartScaledImageView : public QWidget {
  Q_OBJECT

 public:
  explicit NinePartScaledImageView(QWidget* parent = nullptr) : QWidget(parent) {}

  [[nodiscard]] const ImageRef& ninePartScaledImage() const { return m_image; }
  // Null shows nothing.
  void setNinePartScaledImage(ImageRef image);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ImageRef m_image;
  CachedDrawing m_drawing;
};

}  // namespace quillo
