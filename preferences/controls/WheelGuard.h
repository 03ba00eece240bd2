#pragma once

#include <QObject>

class QWidget;

namespace quillo {

// Keeps the wheel from a field that has not the keyboard: a page that is scrolled under the pointer changes no setting.
// The field's own.
class WheelGuard : public QObject {
  Q_OBJECT

 public:
  explicit WheelGuard(QWidget& field);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget& m_field;
};

}  // namespace quillo
