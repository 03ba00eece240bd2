#pragma once

#include <QWidget>

namespace quillo {

// A dot a step, that of the present one in colour. Assistive technology reads "Step 1 of 3".
class StepDots : public QWidget {
  Q_OBJECT

 public:
  explicit StepDots(int steps, QWidget* parent = nullptr);

  void setStep(int step);  // from 0

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int m_steps;
  int m_step{0};
};

}  // namespace quillo
