#pragma once

#include <QDateEdit>

namespace quillo {

// A day, typed or chosen from a calendar that drops down.
class DateField : public QDateEdit {
  Q_OBJECT

 public:
  explicit DateField(QWidget* parent = nullptr);

  // Wide enough for the longest month.
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillo
