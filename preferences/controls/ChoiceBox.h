#pragma once

#include <QComboBox>

namespace quillo {

// A combo box in the colours of our windows.
class ChoiceBox : public QComboBox {
  Q_OBJECT

 public:
  explicit ChoiceBox(QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

// Draws the mark of a field that opens a list, at the end of `field`.
void drawChevron(QWidget& field);

}  // namespace quillo
