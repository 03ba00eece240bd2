#include "preferences/controls/ChoiceBox.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "preferences/controls/WheelGuard.h"

#include <QPainter>
#include <QPainterPath>

namespace quillo {

ChoiceBox::ChoiceBox(QWidget* parent) : QComboBox(parent) {
  setFont(textFont(13));
  new WheelGuard(*this);
  setSizeAdjustPolicy(AdjustToContents);
}

void ChoiceBox::paintEvent(QPaintEvent* event) {
  QComboBox::paintEvent(event);
  drawChevron(*this);
}

void drawChevron(QWidget& field) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(&field);
  painter.setRenderHint(QPainter::Antialiasing);
  const double x = field.layoutDirection() == Qt::RightToLeft ? 15 : field.width() - 15;
  const double y = field.height() / 2.0;
  QPainterPath chevron(QPointF(x - 3.5, y - 1.5));
  chevron.lineTo(x, y + 2);
  chevron.lineTo(x + 3.5, y - 1.5);
  painter.setPen(QPen(field.isEnabled() ? colors.dim : colors.line, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(chevron);
}

}  // namespace quillo
