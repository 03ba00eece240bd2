#include "controls/HoverButtonCell.h"

namespace quillo {

HoverButtonCell::HoverButtonCell() {
  initializeCellProperties();
}

HoverButtonCell::HoverButtonCell(const QString& title) : ButtonCell(title) {
  initializeCellProperties();
}

HoverButtonCell::HoverButtonCell(ImageRef image, ImageRef alternateImage) : ButtonCell(std::move(image)) {
  setAlternateImage(std::move(alternateImage));
  initializeCellProperties();
}

HoverButtonCell::~HoverButtonCell() = default;

void HoverButtonCell::initializeCellProperties() {
  setStandardImage(image());
  setActiveImage(alternateImage());
  setCellAttribute(CellAttribute::LightsByContents, false);
  setCellAttribute(CellAttribute::ChangesContents, true);
  setBordered(true);
  setImagePosition(CellImagePosition::ImageAbove);
}

void HoverButtonCell::setStandardBackground(ImageRef image) {
  m_standardBackground = std::move(image);
  needsDisplay();
}

void HoverButtonCell::setActiveBackground(ImageRef image) {
  m_activeBackground = std::move(image);
  needsDisplay();
}

void HoverButtonCell::setStandardImage(ImageRef image) {
  m_standardImage = std::move(image);
  setImage(m_standardImage);
}

void HoverButtonCell::setActiveImage(ImageRef image) {
  m_activeImage = std::move(image);
  setAlternateImage(m_activeImage);
}

void HoverButtonCell::setStandardStringAttrs(std::optional<TextAttributes> attributes) {
  m_standardStringAttrs = std::move(attributes);
  applyStringAttrsForButtonState();
}

void HoverButtonCell::setActiveStringAttrs(std::optional<TextAttributes> attributes) {
  m_activeStringAttrs = std::move(attributes);
  applyStringAttrsForButtonState();
}

void HoverButtonCell::setTitle(const QString& title) {
  if (!m_standardStringAttrs) return ButtonCell::setTitle(title);
  setAttributedTitle({title, *m_standardStringAttrs});
}

void HoverButtonCell::setAlternateTitle(const QString& title) {
  if (!m_standardStringAttrs) return ButtonCell::setAlternateTitle(title);
  setAttributedAlternateTitle({title, *m_standardStringAttrs});
}

void HoverButtonCell::useStringAttrs(const std::optional<TextAttributes>& attributes) {
  if (!attributes) return;
  setAttributedTitle({title(), *attributes});
  setAttributedAlternateTitle({alternateTitle(), *attributes});
}

void HoverButtonCell::applyStringAttrsForButtonState() {
  useStringAttrs(state() == CellState::On ? m_activeStringAttrs : m_standardStringAttrs);
}

void HoverButtonCell::performClick() {
  ButtonCell::performClick();
  applyStringAttrsForButtonState();
}

void HoverButtonCell::setEnabled(bool enabled) {
  setImage(!enabled && m_disabledImage ? m_disabledImage : m_standardImage);
  ButtonCell::setEnabled(enabled);
}

void HoverButtonCell::mouseEntered() {
  if (!isEnabled()) return;
  setImage(m_hoverImage);
  useStringAttrs(m_activeStringAttrs);
}

void HoverButtonCell::mouseExited() {
  if (!isEnabled()) return;
  setImage(m_standardImage);
  useStringAttrs(m_standardStringAttrs);
}

void HoverButtonCell::drawWithFrame(QPainter& painter, const QRectF& frame, QWidget* view) {
  updateTrackingAreaWithRect(frame, view);
  ButtonCell::drawWithFrame(painter, frame, view);
}

void HoverButtonCell::updateTrackingAreaWithRect(const QRectF& rect, QWidget* view) {
  bool pointerInside = false;
  if (m_trackingArea && m_trackingArea->rect() != rect) {
    // The pointer has not moved because the frame did: the new area must still tell when it leaves.
    pointerInside = m_trackingArea->isPointerInside();
    m_trackingArea.reset();
    m_trackingView = nullptr;
  }
  if (m_trackingArea || !view) return;
  m_trackingView = view;
  m_trackingArea = std::make_unique<TrackingArea>(*view, rect, *this, pointerInside);
}

void HoverButtonCell::drawBezelWithFrame(QPainter& painter, const QRectF& frame, QWidget* /*view*/) {
  const bool active = state() == CellState::On || isHighlighted();
  const ImageRef& background = active ? m_activeBackground : m_standardBackground;
  if (!background) return;
  background->drawInRect(painter, frame, {}, CompositingOperation::SourceOver, 1.0, /*respectFlipped=*/true);
}

QRectF HoverButtonCell::drawTitle(QPainter& painter, const AttributedString& title, const QRectF& frame,
                                  QWidget* view) {
  if (isEnabled()) return ButtonCell::drawTitle(painter, title, frame, view);
  // Not dimmed, as the main application draws its buttons: always the cell's own title in its own look, even where the
  // alternate one was asked for.
  const AttributedString& own = attributedTitle();
  if (own.string.isEmpty()) return {};
  own.drawInRect(painter, frame);
  return {QPointF(0, 0), own.size()};
}

QRectF HoverButtonCell::titleRectForBounds(const QRectF& bounds) const {
  // 3 points above the middle: the bodies of the button pictures end 5 points above the frame's lower edge.
  const QSizeF size = attributedTitle().size();
  return {bounds.x() + bounds.width() * 0.5 - size.width() * 0.5,
          bounds.y() + bounds.height() * 0.5 - size.height() * 0.5 - 3.0, size.width(), size.height()};
}

QRectF HoverButtonCell::drawingRectForBounds(const QRectF& bounds) const {
  return bounds;
}

}  // namespace quillo
