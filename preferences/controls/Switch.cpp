#include "preferences/controls/Switch.h"

#include "controls/look/JournalColors.h"

#include <QPainter>

namespace quillo {

namespace {

// In points, the ring of the keyboard's focus around it included.
constexpr QSize wholeSize{46, 30};
constexpr double ring = 3;
constexpr double gap = 3;

}  // namespace

Switch::Switch(QWidget* parent) : QCheckBox(parent) {
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::StrongFocus);
}

QSize Switch::sizeHint() const {
  return wholeSize;
}

void Switch::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.45);
  QRectF track({0, 0}, QSizeF(wholeSize));
  track.moveTop((height() - track.height()) / 2);
  if (layoutDirection() == Qt::RightToLeft) track.moveRight(width());
  if (hasFocus()) {
    painter.setPen(QPen(blended(colors.accent, colors.ground, 0.55), 2));
    painter.drawRoundedRect(track.adjusted(1, 1, -1, -1), track.height() / 2, track.height() / 2);
  }
  track.adjust(ring, ring, -ring, -ring);
  painter.setPen(isChecked() ? QPen(Qt::NoPen) : QPen(colors.line, 1));
  painter.setBrush(isChecked() ? colors.accent : blended(colors.dim, colors.ground, 0.35));
  painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
  const double side = track.height() - 2 * gap;
  const bool isAtRight = isChecked() != (layoutDirection() == Qt::RightToLeft);
  const QRectF knob(isAtRight ? track.right() - gap - side : track.left() + gap, track.top() + gap, side, side);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.accentText);
  painter.drawEllipse(knob);
}

}  // namespace quillo
