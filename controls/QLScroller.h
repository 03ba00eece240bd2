#pragma once

#include <QColor>
#include <QPainter>
#include <QScrollBar>

#include <memory>

namespace quillo {

class ScrollerStyle;

// A slim scroll bar: a translucent grey pill, no track, no arrows.
class QLScroller : public QScrollBar {
  Q_OBJECT

 public:
  static constexpr int scrollerWidth = 15;  // points
  static constexpr double knobWidth = 7.0;
  static constexpr double knobRadius = 3.0;

  explicit QLScroller(QWidget* parent = nullptr);
  explicit QLScroller(Qt::Orientation orientation, QWidget* parent = nullptr);
  ~QLScroller() override;

  [[nodiscard]] bool isOpaque() const { return false; }
  // Where the knob's part of the bar lies: the piece that the pointer can take hold of.
  [[nodiscard]] QRectF rectForKnob() const;
  // The pill inside it. Always 7 points wide and centred across the standard width, also in a horizontal bar, where it
  // therefore stands near the left end and does not move along: only vertical bars are ever shown.
  [[nodiscard]] QRectF knobRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void drawKnob(QPainter& painter) const;

  std::unique_ptr<ScrollerStyle> m_style;
};

}  // namespace quillo
