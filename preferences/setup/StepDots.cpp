#include "preferences/setup/StepDots.h"

#include "controls/look/JournalColors.h"

#include <QPainter>

namespace quillo {

// In points.
static constexpr int dot = 10;
static constexpr int pitch = 17;

StepDots::StepDots(int steps, QWidget* parent) : QWidget(parent), m_steps(steps) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setStep(0);
}

void StepDots::setStep(int step) {
  m_step = step;
  setAccessibleName(QStringLiteral("Step %1 of %2").arg(step + 1).arg(m_steps));
  update();
}

QSize StepDots::sizeHint() const {
  return {pitch * (m_steps - 1) + dot, dot};
}

void StepDots::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  for (int i = 0; i < m_steps; ++i) {
    painter.setBrush(i == m_step ? colors.accent : blended(colors.shade, colors.dim, 0.75));
    painter.drawEllipse(i * pitch, 0, dot, dot);
  }
}

}  // namespace quillo
