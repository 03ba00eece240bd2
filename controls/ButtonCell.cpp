#include "controls/ButtonCell.h"

#include "controls/Fonts.h"
#include "controls/NinePartScaledImage.h"

#include <algorithm>
#include <cmath>

namespace quillo {

namespace {

AttributedString plainTitle(const QString& text) {
  return {text, {textFont(13), Qt::black, std::nullopt}};
}

}  // namespace

ButtonCell::ButtonCell(const QString& title) : m_title(plainTitle(title)) {}

ButtonCell::ButtonCell(ImageRef image) : m_image(std::move(image)), m_imagePosition(CellImagePosition::ImageOnly) {}

void ButtonCell::setTitle(const QString& title) {
  setAttributedTitle(plainTitle(title));
}

void ButtonCell::setAlternateTitle(const QString& title) {
  setAttributedAlternateTitle(plainTitle(title));
}

void ButtonCell::setAttributedTitle(AttributedString title) {
  m_title = std::move(title);
  needsDisplay();
}

void ButtonCell::setAttributedAlternateTitle(AttributedString title) {
  m_alternateTitle = std::move(title);
  needsDisplay();
}

void ButtonCell::setImage(ImageRef image) {
  // A button is given its picture anew at each showing.
  if (image == m_image) return;
  m_image = std::move(image);
  needsDisplay();
}

void ButtonCell::setAlternateImage(ImageRef image) {
  m_alternateImage = std::move(image);
  needsDisplay();
}

void ButtonCell::setState(CellState state) {
  m_state = state;
  needsDisplay();
}

void ButtonCell::setEnabled(bool enabled) {
  m_enabled = enabled;
  needsDisplay();
}

void ButtonCell::setHighlighted(bool highlighted) {
  m_highlighted = highlighted;
  needsDisplay();
}

void ButtonCell::setBordered(bool bordered) {
  m_bordered = bordered;
  needsDisplay();
}

void ButtonCell::setImagePosition(CellImagePosition position) {
  m_imagePosition = position;
  needsDisplay();
}

void ButtonCell::setHighlightsBy(unsigned mask) {
  m_highlightsBy = mask;
  needsDisplay();
}

void ButtonCell::setShowsStateBy(unsigned mask) {
  m_showsStateBy = mask;
  needsDisplay();
}

void ButtonCell::setCellAttribute(CellAttribute attribute, bool value) {
  const auto with = [value](unsigned mask) {
    return value ? mask | ContentsCellMask : mask & ~static_cast<unsigned>(ContentsCellMask);
  };
  switch (attribute) {
    case CellAttribute::LightsByContents:
      setHighlightsBy(with(m_highlightsBy));
      break;
    case CellAttribute::ChangesContents:
      setShowsStateBy(with(m_showsStateBy));
      break;
  }
}

void ButtonCell::performClick() {
  if (m_enabled && m_clickHandler) m_clickHandler();
}

void ButtonCell::drawWithFrame(QPainter& painter, const QRectF& frame, QWidget* view) {
  if (m_bordered) drawBezelWithFrame(painter, frame, view);
  const QRectF bounds = drawingRectForBounds(frame);
  const ImageRef& image = shownImage();
  if (image && m_imagePosition != CellImagePosition::NoImage) {
    image->drawInRect(painter, imageRectForBounds(bounds), {}, CompositingOperation::SourceOver, 1.0,
                      /*respectFlipped=*/true);
  }
  if (m_imagePosition != CellImagePosition::ImageOnly && !shownTitle().string.isEmpty()) {
    drawTitle(painter, shownTitle(), titleRectForBounds(bounds), view);
  }
}

void ButtonCell::drawBezelWithFrame(QPainter& /*painter*/, const QRectF& /*frame*/, QWidget* /*view*/) {}

QRectF ButtonCell::drawTitle(QPainter& painter, const AttributedString& title, const QRectF& frame, QWidget* /*view*/) {
  AttributedString shown = title;
  if (!m_enabled) {
    QColor& color = shown.attributes.foregroundColor;
    color.setAlphaF(color.alphaF() * 0.5F);
  }
  shown.drawInRect(painter, frame);
  return frame;
}

QRectF ButtonCell::drawingRectForBounds(const QRectF& bounds) const {
  return bounds;
}

QRectF ButtonCell::titleRectForBounds(const QRectF& bounds) const {
  const QSizeF size = shownTitle().size();
  return {bounds.x() + (bounds.width() - size.width()) * 0.5, bounds.y() + (bounds.height() - size.height()) * 0.5,
          size.width(), size.height()};
}

QRectF ButtonCell::imageRectForBounds(const QRectF& bounds) const {
  const ImageRef& image = shownImage();
  if (!image) return {};
  if (dynamic_cast<const NinePartScaledImage*>(image.get())) return bounds;
  QRectF room = bounds;
  if (m_imagePosition == CellImagePosition::ImageAbove && !shownTitle().string.isEmpty()) {
    room.setBottom(std::max(room.top(), titleRectForBounds(bounds).top()));
  }
  QSizeF size = image->size();
  if (size.width() > room.width() || size.height() > room.height()) {
    size.scale(room.size(), Qt::KeepAspectRatio);
  }
  // Whole points, so that a picture of an even size in a frame of an odd one stays sharp.
  return {std::floor(room.x() + (room.width() - size.width()) * 0.5),
          std::floor(room.y() + (room.height() - size.height()) * 0.5), size.width(), size.height()};
}

QSizeF ButtonCell::cellSize() const {
  const QSizeF title = m_imagePosition == CellImagePosition::ImageOnly ? QSizeF(0, 0) : shownTitle().size();
  const QSizeF image = m_image && m_imagePosition != CellImagePosition::NoImage ? m_image->size() : QSizeF(0, 0);
  const bool stretches = dynamic_cast<const NinePartScaledImage*>(m_image.get()) != nullptr;
  if (m_imagePosition == CellImagePosition::ImageAbove && !stretches && !title.isEmpty()) {
    return {std::max(title.width(), image.width()), title.height() + image.height()};
  }
  return title.expandedTo(image);
}

const ImageRef& ButtonCell::shownImage() const {
  return showsAlternate() && m_alternateImage ? m_alternateImage : m_image;
}

const AttributedString& ButtonCell::shownTitle() const {
  return showsAlternate() && !m_alternateTitle.string.isEmpty() ? m_alternateTitle : m_title;
}

bool ButtonCell::showsAlternate() const {
  return (m_state == CellState::On && (m_showsStateBy & ContentsCellMask)) ||
         (m_highlighted && (m_highlightsBy & ContentsCellMask));
}

void ButtonCell::needsDisplay() const {
  if (m_displayHandler) m_displayHandler();
}

}  // namespace quillo
