#include "entry/EntryBackgroundView.h"

#include <algorithm>
#include <utility>

namespace quillo {

static constexpr double radius = 8;
static constexpr double arrowHalfWidth = 10;
static_assert(EntryBackgroundView::arrowMargin > radius + arrowHalfWidth);

EntryBackgroundView::EntryBackgroundView(QWidget* parent) : QWidget(parent), m_arrowX(164) {}

void EntryBackgroundView::setArrowX(double x) {
  const double kept = std::clamp(x, arrowMargin, std::max(arrowMargin, width() - arrowMargin));
  if (std::exchange(m_arrowX, kept) != kept) changeOutline();
}

void EntryBackgroundView::setArrowEdge(Qt::Edge edge) {
  if (std::exchange(m_arrowEdge, edge) != edge) changeOutline();
}

void EntryBackgroundView::setShowsArrow(bool shows) {
  if (std::exchange(m_showsArrow, shows) != shows) changeOutline();
}

void EntryBackgroundView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  changeOutline();
}

void EntryBackgroundView::change() {
  if (onChange) onChange();
}

void EntryBackgroundView::changeOutline() {
  m_outline.clear();
  change();
}

void EntryBackgroundView::setAlpha(double alpha) {
  m_alpha = alpha;
  change();
}

const QPainterPath& EntryBackgroundView::outline() const {
  if (!m_outline.isEmpty()) return m_outline;
  QPainterPath body;
  body.addRoundedRect(QRectF(0, arrowHeight, width(), height() - arrowHeight), radius, radius);
  QPainterPath arrow;
  arrow.moveTo(m_arrowX - arrowHalfWidth, arrowHeight + 1);
  arrow.lineTo(m_arrowX - 1.5, 1.4);
  // A tip that is a little round.
  arrow.quadTo(m_arrowX, 0, m_arrowX + 1.5, 1.4);
  arrow.lineTo(m_arrowX + arrowHalfWidth, arrowHeight + 1);
  arrow.closeSubpath();
  const QPainterPath shape = m_showsArrow ? body.united(arrow) : body;
  // The same upside down; the light still comes from above.
  m_outline = m_arrowEdge == Qt::TopEdge ? shape : QTransform(1, 0, 0, -1, 0, height()).map(shape);
  return m_outline;
}

void EntryBackgroundView::draw(QPainter& painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  const QPainterPath& shape = outline();

  QLinearGradient slate(0, 0, 0, height());
  slate.setColorAt(0, QColor(0x3a, 0x3e, 0x45));
  slate.setColorAt(1, QColor(0x2a, 0x2d, 0x33));
  painter.setOpacity(m_alpha);
  painter.fillPath(shape, slate);

  // A hairline: lighter where light falls on the upper edge, dark around the rest.
  painter.setOpacity(1);
  QLinearGradient edge(0, 0, 0, height());
  edge.setColorAt(0, QColor(255, 255, 255, 46));
  edge.setColorAt(0.12, QColor(255, 255, 255, 20));
  edge.setColorAt(1, QColor(0, 0, 0, 70));
  painter.setClipPath(shape);
  painter.strokePath(shape, QPen(QBrush(edge), 2));
}

}  // namespace quillo
