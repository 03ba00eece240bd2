#pragma once

#include <QCheckBox>

namespace quillo {

// A setting that is on or off, drawn as a sliding switch. To everything but the eye it is a check box: Space turns it,
// and assistive technology reads it as one.
class Switch : public QCheckBox {
  Q_OBJECT

 public:
  explicit Switch(QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

}  // namespace quillo
