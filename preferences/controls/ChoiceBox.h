#pragma once

#include <QComboBox>

namespace quillo {

// A combo box in the colours of our windows. The wheel turns it only while it has the keyboard: a page that is
// scrolled under the pointer changes no setting.
class ChoiceBox : public QComboBox {
  Q_OBJECT

 public:
  explicit ChoiceBox(QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
};

// Draws the mark of a field that opens a list, at the end of `field`.
void drawChevron(QWidget& field);

}  // namespace quillo
