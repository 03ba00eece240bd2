#pragma once

#include "controls/ButtonCell.h"
#include "controls/TrackingArea.h"

#include <QPointer>

#include <memory>
#include <optional>

namespace quillo {

// A cell for dark backgrounds: a picture each for rest, hover, on and disabled, a background each for rest and for
// pressed or on, and two looks of the title. The pointer's coming and going swap picture and title; pressing swaps the
// background only. Looks follow those events, they are not worked out anew at each drawing. A missing picture draws
// nothing, so a cell without a hover picture has none under the pointer; missing attributes leave the title as it is.
class HoverButtonCell : public ButtonCell, public TrackingAreaOwner {
 public:
  HoverButtonCell();
  explicit HoverButtonCell(const QString& title);
  explicit HoverButtonCell(ImageRef image, ImageRef alternateImage = {});
  ~HoverButtonCell() override;

  [[nodiscard]] const TrackingArea* trackingArea() const { return m_trackingArea.get(); }
  [[nodiscard]] QWidget* trackingView() const { return m_trackingView; }

  [[nodiscard]] const ImageRef& standardBackground() const { return m_standardBackground; }
  void setStandardBackground(ImageRef image);
  [[nodiscard]] const ImageRef& activeBackground() const { return m_activeBackground; }
  void setActiveBackground(ImageRef image);
  [[nodiscard]] const ImageRef& standardImage() const { return m_standardImage; }
  void setStandardImage(ImageRef image);  // also the picture shown
  [[nodiscard]] const ImageRef& activeImage() const { return m_activeImage; }
  void setActiveImage(ImageRef image);  // also the alternate picture
  [[nodiscard]] const ImageRef& hoverImage() const { return m_hoverImage; }
  void setHoverImage(ImageRef image) { m_hoverImage = std::move(image); }
  [[nodiscard]] const ImageRef& disabledImage() const { return m_disabledImage; }
  void setDisabledImage(ImageRef image) { m_disabledImage = std::move(image); }
  [[nodiscard]] const std::optional<TextAttributes>& standardStringAttrs() const { return m_standardStringAttrs; }
  void setStandardStringAttrs(std::optional<TextAttributes> attributes);
  [[nodiscard]] const std::optional<TextAttributes>& activeStringAttrs() const { return m_activeStringAttrs; }
  void setActiveStringAttrs(std::optional<TextAttributes> attributes);

  // Both titles always take the standard look when set.
  void setTitle(const QString& title) override;
  void setAlternateTitle(const QString& title) override;
  void useStringAttrs(const std::optional<TextAttributes>& attributes);
  void applyStringAttrsForButtonState();

  void performClick() override;
  void setEnabled(bool enabled) override;
  void mouseEntered() override;
  void mouseExited() override;

  void drawWithFrame(QPainter& painter, const QRectF& frame, QWidget* view) override;
  void updateTrackingAreaWithRect(const QRectF& rect, QWidget* view);
  void drawBezelWithFrame(QPainter& painter, const QRectF& frame, QWidget* view) override;
  QRectF drawTitle(QPainter& painter, const AttributedString& title, const QRectF& frame, QWidget* view) override;
  [[nodiscard]] QRectF titleRectForBounds(const QRectF& bounds) const override;
  [[nodiscard]] QRectF drawingRectForBounds(const QRectF& bounds) const override;

 private:
  void initializeCellProperties();

  std::unique_ptr<TrackingArea> m_trackingArea;
  QPointer<QWidget> m_trackingView;
  ImageRef m_standardBackground;
  ImageRef m_activeBackground;
  ImageRef m_standardImage;
  ImageRef m_activeImage;
  ImageRef m_hoverImage;
  ImageRef m_disabledImage;
  std::optional<TextAttributes> m_standardStringAttrs;
  std::optional<TextAttributes> m_activeStringAttrs;
};

}  // namespace quillo
