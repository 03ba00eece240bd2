#pragma once

#include "controls/HoverButtonCell.h"

namespace quillo {

// The main action on a dark panel: a blue body that stretches to the button's frame, brighter under the pointer, its
// title white. The lowest 5 points of the frame hold the body's shadow.
class BlueOnDarkButtonCell : public HoverButtonCell {
 public:
  BlueOnDarkButtonCell();
  explicit BlueOnDarkButtonCell(const QString& title);
  explicit BlueOnDarkButtonCell(ImageRef image);

  [[nodiscard]] QRectF focusRingRectForBounds(const QRectF& bounds) const override;

 private:
  void initializeCellStyle();
};

// The same in slate, for every other action.
class DarkButtonCell : public HoverButtonCell {
 public:
  DarkButtonCell();
  explicit DarkButtonCell(const QString& title);
  explicit DarkButtonCell(ImageRef image);

  [[nodiscard]] QRectF focusRingRectForBounds(const QRectF& bounds) const override;

 private:
  void initializeCellStyle();
};

}  // namespace quillo
