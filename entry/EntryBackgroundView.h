#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <functional>

namespace quillo {

// The entry window's body: slate, rounded, with an arrow at the top, or the bottom, that meets the status item. The
// window draws it, into one picture with the shadow around it; the view itself draws nothing.
class EntryBackgroundView : public QWidget {
  Q_OBJECT

 public:
  // The arrow's share of the height, in points.
  static constexpr double arrowHeight = 10;
  // How near to the left and the right edge the arrow's tip may come, in points: beside the rounded corner.
  static constexpr double arrowMargin = 20;

  explicit EntryBackgroundView(QWidget* parent = nullptr);

  // Where the arrow's tip points, in points from the left edge; kept clear of the corners.
  void setArrowX(double x);
  // Qt::TopEdge or Qt::BottomEdge: where the status item is.
  void setArrowEdge(Qt::Edge edge);
  [[nodiscard]] Qt::Edge arrowEdge() const { return m_arrowEdge; }
  // Without it the body alone is drawn, at the same place.
  void setShowsArrow(bool shows);
  [[nodiscard]] bool showsArrow() const { return m_showsArrow; }
  // 0 to 1.
  void setAlpha(double alpha);

  // Body and arrow as one shape, in the view's own points. The same object as before where nothing has changed, which
  // makes comparing cheap.
  [[nodiscard]] const QPainterPath& outline() const;

  // In the view's own points.
  void draw(QPainter& painter) const;
  // Called when it would look different.
  std::function<void()> onChange;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void change();
  void changeOutline();

  double m_arrowX;
  Qt::Edge m_arrowEdge{Qt::TopEdge};
  bool m_showsArrow{true};
  double m_alpha{1};
  mutable QPainterPath m_outline;  // empty until it is asked for
};

}  // namespace quillo
