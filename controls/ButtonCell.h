#pragma once

#include "controls/AttributedString.h"
#include "controls/Image.h"

#include <QPainter>
#include <QWidget>

#include <functional>

namespace quillo {

// What of a cell can change its look when it is pressed or on; bits that add up.
enum CellMask : unsigned {
  NoCellMask = 0,
  ContentsCellMask = 1,
  PushInCellMask = 2,
  ChangeGrayCellMask = 4,
  ChangeBackgroundCellMask = 8
};
// The attributes of a cell that setCellAttribute() knows.
enum class CellAttribute { LightsByContents = 6, ChangesContents = 14 };
enum class CellState { Off = 0, On = 1 };
enum class CellImagePosition { NoImage = 0, ImageOnly = 1, ImageAbove = 5, ImageOverlaps = 6 };

// The face of a button: its title, pictures and state, and how they are drawn. The button owns its cell and hands it
// events; a cell without a button works too. Rectangles are the button's (y downwards, points). Main thread only.
class ButtonCell {
 public:
  ButtonCell() = default;
  explicit ButtonCell(const QString& title);  // a cell for a text
  explicit ButtonCell(ImageRef image);        // a cell for a picture
  virtual ~ButtonCell() = default;
  ButtonCell(const ButtonCell&) = delete;
  ButtonCell& operator=(const ButtonCell&) = delete;

  // What is told when the cell looks different; the button sets it.
  void setDisplayHandler(std::function<void()> handler) { m_displayHandler = std::move(handler); }
  // What a programmatic click does; the button sets it.
  void setClickHandler(std::function<void()> handler) { m_clickHandler = std::move(handler); }

  [[nodiscard]] QString title() const { return m_title.string; }
  virtual void setTitle(const QString& title);
  [[nodiscard]] QString alternateTitle() const { return m_alternateTitle.string; }
  virtual void setAlternateTitle(const QString& title);
  [[nodiscard]] const AttributedString& attributedTitle() const { return m_title; }
  void setAttributedTitle(AttributedString title);
  [[nodiscard]] const AttributedString& attributedAlternateTitle() const { return m_alternateTitle; }
  void setAttributedAlternateTitle(AttributedString title);

  [[nodiscard]] const ImageRef& image() const { return m_image; }
  void setImage(ImageRef image);
  [[nodiscard]] const ImageRef& alternateImage() const { return m_alternateImage; }
  void setAlternateImage(ImageRef image);

  [[nodiscard]] CellState state() const { return m_state; }
  void setState(CellState state);
  [[nodiscard]] bool isEnabled() const { return m_enabled; }
  virtual void setEnabled(bool enabled);
  // Pressed by the pointer or a key just now.
  [[nodiscard]] bool isHighlighted() const { return m_highlighted; }
  void setHighlighted(bool highlighted);
  void setBordered(bool bordered);
  void setImagePosition(CellImagePosition position);

  // Sums of CellMask bits. Contents: the alternate picture and title take the place of the usual ones.
  void setHighlightsBy(unsigned mask);
  void setShowsStateBy(unsigned mask);
  void setCellAttribute(CellAttribute attribute, bool value);

  // A click without the pointer; a disabled cell ignores it.
  virtual void performClick();

  // Bezel (when bordered), picture, title. `view` is where it is drawn.
  virtual void drawWithFrame(QPainter& painter, const QRectF& frame, QWidget* view);
  virtual void drawBezelWithFrame(QPainter& painter, const QRectF& frame, QWidget* view);
  // Answers the rectangle that the title takes.
  virtual QRectF drawTitle(QPainter& painter, const AttributedString& title, const QRectF& frame, QWidget* view);

  [[nodiscard]] virtual QRectF drawingRectForBounds(const QRectF& bounds) const;
  [[nodiscard]] virtual QRectF titleRectForBounds(const QRectF& bounds) const;
  // A nine-part picture takes all the bounds; any other keeps its size (made smaller where it does not fit), in the
  // middle, or above the title where there is one.
  [[nodiscard]] virtual QRectF imageRectForBounds(const QRectF& bounds) const;
  // What of the bounds the keyboard's focus ring goes around.
  [[nodiscard]] virtual QRectF focusRingRectForBounds(const QRectF& bounds) const { return bounds; }
  // The room that the title and the picture ask for.
  [[nodiscard]] QSizeF cellSize() const;

 protected:
  // The picture and title to show in the present state.
  [[nodiscard]] const ImageRef& shownImage() const;
  [[nodiscard]] const AttributedString& shownTitle() const;
  void needsDisplay() const;

 private:
  [[nodiscard]] bool showsAlternate() const;

  std::function<void()> m_displayHandler;
  std::function<void()> m_clickHandler;
  AttributedString m_title;
  AttributedString m_alternateTitle;
  ImageRef m_image;
  ImageRef m_alternateImage;
  CellState m_state{CellState::Off};
  bool m_enabled{true};
  bool m_highlighted{false};
  bool m_bordered{false};
  CellImagePosition m_imagePosition{CellImagePosition::ImageOverlaps};
  unsigned m_highlightsBy{PushInCellMask | ChangeGrayCellMask | ChangeBackgroundCellMask};
  unsigned m_showsStateBy{NoCellMask};
};

}  // namespace quillo
