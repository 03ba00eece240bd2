#include "preferences/controls/TickBox.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace quillo {

namespace {

// In points.
constexpr int boxSide = 17;
constexpr int ring = 3;
constexpr int gap = 4;
// As a field beside it has.
constexpr int rowHeight = 30;

}  // namespace

TickBox::TickBox(const QString& text, QWidget* parent) : QCheckBox(text, parent) {
  setFont(textFont(13));
  setFocusPolicy(Qt::StrongFocus);
}

QSize TickBox::sizeHint() const {
  const QSize text = fontMetrics().size(Qt::TextShowMnemonic, this->text());
  return {boxSide + 2 * ring + gap + text.width(), std::max(rowHeight, text.height())};
}

void TickBox::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.45);
  const QRect whole(0, 0, boxSide + 2 * ring, boxSide + 2 * ring);
  QRectF box = QStyle::alignedRect(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter, whole.size(), rect());
  if (hasFocus()) {
    painter.setPen(QPen(blended(colors.accent, colors.ground, 0.55), 2));
    painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 6, 6);
  }
  box.adjust(ring + 0.5, ring + 0.5, -ring - 0.5, -ring - 0.5);
  painter.setPen(QPen(isChecked() ? colors.accent : blended(colors.dim, colors.line, 0.4), 1));
  painter.setBrush(isChecked() ? colors.accent : colors.paper);
  painter.drawRoundedRect(box, 4, 4);
  if (isChecked()) {
    QPainterPath tick(box.topLeft() + QPointF(3.8, 8.4));
    tick.lineTo(box.topLeft() + QPointF(6.8, 11.4));
    tick.lineTo(box.topLeft() + QPointF(12.2, 5));
    painter.setPen(QPen(colors.accentText, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(tick);
  }
  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  const int start = whole.width() + gap;
  painter.setPen(colors.text);
  painter.drawText(isMirrored ? rect().adjusted(0, 0, -start, 0) : rect().adjusted(start, 0, 0, 0),
                   Qt::AlignVCenter | Qt::TextShowMnemonic | (isMirrored ? Qt::AlignRight : Qt::AlignLeft), text());
}

}  // namespace quillo
