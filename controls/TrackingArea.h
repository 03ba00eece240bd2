#pragma once

#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QWidget>

namespace quillo {

// Told when the pointer comes into a tracking area and leaves it.
class TrackingAreaOwner {
 public:
  virtual void mouseEntered() = 0;
  virtual void mouseExited() = 0;

 protected:
  ~TrackingAreaOwner() = default;
};

// Watches the pointer over a rectangle of a view, whichever window is active. Watching ends with the object or with
// the view. A view that is hidden counts as left: nothing else would say so.
class TrackingArea : public QObject {
  Q_OBJECT

 public:
  // `rect`: in the view's own coordinates. `owner` outlives the area. `pointerInside`: whether the pointer is known to
  // be inside already, so that leaving is told.
  TrackingArea(QWidget& view, const QRectF& rect, TrackingAreaOwner& owner, bool pointerInside = false);
  ~TrackingArea() override;

  [[nodiscard]] const QRectF& rect() const { return m_rect; }
  [[nodiscard]] bool isPointerInside() const { return m_inside; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void setPointerInside(bool inside);

  QPointer<QWidget> m_view;
  QRectF m_rect;
  TrackingAreaOwner& m_owner;
  bool m_inside;
};

}  // namespace quillo
