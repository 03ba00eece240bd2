#pragma once

#include <QWidget>

namespace quillo {

// The band behind the metadata line, at the foot of the text area's paper: a shade darker, with a hairline above, and
// round at the lower corners like the paper.
class MetadataBackgroundBox : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillo
