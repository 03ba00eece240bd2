#pragma once

#include <QCheckBox>

namespace quillo {

// A check box in the colours of our windows.
class TickBox : public QCheckBox {
  Q_OBJECT

 public:
  explicit TickBox(const QString& text, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

}  // namespace quillo
