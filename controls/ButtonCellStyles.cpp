#include "controls/ButtonCellStyles.h"

#include "controls/Fonts.h"
#include "controls/NinePartScaledImage.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What the pictures keep free below the body, in points.
constexpr double shadowHeight = 5.0;

struct CellStyle {
  QColor textColor;
  QString standardImage;
  QString hoverImage;
  QPointF scaleTopLeft;  // in the pictures' points, y upwards
  QPointF scaleBottomRight;
};

ImageRef scalableImage(const QString& name, const CellStyle& style) {
  const ImageRef source = Image::imageNamed(name);
  if (!source) return nullptr;
  return std::make_shared<NinePartScaledImage>(source, style.scaleTopLeft, style.scaleBottomRight);
}

void applyStyle(HoverButtonCell& cell, const CellStyle& style) {
  const TextShadow shadow{QColor::fromRgbF(0, 0, 0, 0.1F), QPointF(0, 1), 1.0};
  const TextAttributes attributes{textFont(12, QFont::Medium), style.textColor, shadow};
  cell.setStandardStringAttrs(attributes);
  cell.setActiveStringAttrs(attributes);
  cell.setTitle(cell.title());
  cell.setStandardImage(scalableImage(style.standardImage, style));
  cell.setHoverImage(scalableImage(style.hoverImage, style));
}

}  // namespace

BlueOnDarkButtonCell::BlueOnDarkButtonCell() {
  initializeCellStyle();
}

BlueOnDarkButtonCell::BlueOnDarkButtonCell(const QString& title) : HoverButtonCell(title) {
  initializeCellStyle();
}

BlueOnDarkButtonCell::BlueOnDarkButtonCell(ImageRef image) : HoverButtonCell(std::move(image)) {
  initializeCellStyle();
}

QRectF BlueOnDarkButtonCell::focusRingRectForBounds(const QRectF& bounds) const {
  return bounds.adjusted(0, 0, 0, -shadowHeight);
}

void BlueOnDarkButtonCell::initializeCellStyle() {
  applyStyle(*this, {QColor::fromRgbF(1, 1, 1, 1), u"menubar-button-blue"_s, u"menubar-button-blue-active"_s,
                     QPointF(45, 18), QPointF(71, 15)});
}

DarkButtonCell::DarkButtonCell() {
  initializeCellStyle();
}

DarkButtonCell::DarkButtonCell(const QString& title) : HoverButtonCell(title) {
  initializeCellStyle();
}

DarkButtonCell::DarkButtonCell(ImageRef image) : HoverButtonCell(std::move(image)) {
  initializeCellStyle();
}

QRectF DarkButtonCell::focusRingRectForBounds(const QRectF& bounds) const {
  return bounds.adjusted(0, 0, 0, -shadowHeight);
}

void DarkButtonCell::initializeCellStyle() {
  applyStyle(*this, {QColor(226, 227, 230), u"menubar-button-dark"_s, u"menubar-button-dark-active"_s, QPointF(15, 18),
                     QPointF(71, 15)});
  setHighlightsBy(NoCellMask);
  setShowsStateBy(ContentsCellMask);
}

}  // namespace quillo
