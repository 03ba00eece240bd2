#include "controls/ProgressIndicator.h"

#include <QPainter>
#include <QTimerEvent>

#include <algorithm>

namespace quillo {

static constexpr int spokes = 8;
static constexpr int millisecondsPerSpoke = 100;

void ProgressIndicator::startAnimation() {
  m_isAnimating = true;
  updateTimer();
}

void ProgressIndicator::stopAnimation() {
  m_isAnimating = false;
  updateTimer();
}

void ProgressIndicator::updateTimer() {
  if (m_isAnimating && isVisible()) {
    if (!m_timer.isActive()) m_timer.start(millisecondsPerSpoke, this);
  } else {
    m_timer.stop();
  }
  update();
}

void ProgressIndicator::showEvent(QShowEvent*) {
  updateTimer();
}

void ProgressIndicator::hideEvent(QHideEvent*) {
  m_timer.stop();
}

void ProgressIndicator::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_timer.timerId()) return;
  m_step = (m_step + 1) % spokes;
  update();
}

void ProgressIndicator::paintEvent(QPaintEvent*) {
  if (!m_isAnimating) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double radius = std::min(width(), height()) / 2.0;
  painter.translate(QRectF(rect()).center());
  for (int i = 0; i < spokes; ++i) {
    // The spoke of the moment is the strongest, those behind it fade.
    const int age = (m_step - i + spokes) % spokes;
    painter.setPen(QPen(QColor(0x6b, 0x6a, 0x64, 230 - age * 26), radius * 0.22, Qt::SolidLine, Qt::RoundCap));
    painter.save();
    painter.rotate(360.0 / spokes * i);
    painter.drawLine(QPointF(0, -radius * 0.45), QPointF(0, -radius * 0.85));
    painter.restore();
  }
}

}  // namespace quillo
