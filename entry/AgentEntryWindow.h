#pragma once

#include <QPainterPath>
#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class AgentEntryWindow;
}

namespace quillo {

// The borderless window that hangs under the status item: its look, its frame, and taking the keyboard. What it does is
// the controller's.
//
// The frame is the window as the layout knows it, 328 x 268 points. Where a compositor draws translucent windows, the
// widget is larger by a margin in which it paints its own shadow; elsewhere it is cut to its outline.
class AgentEntryWindow : public QWidget {
  Q_OBJECT

 public:
  static constexpr QSizeF frameSize{328, 268};

  AgentEntryWindow();
  ~AgentEntryWindow() override;

  [[nodiscard]] Ui::AgentEntryWindow& ui() { return *m_ui; }

  // In screen points, origin bottom left.
  [[nodiscard]] QRectF frame() const;
  void setFrameOrigin(QPointF origin);
  // Where the arrow points, in screen points from the left.
  void setArrowScreenX(double x);

  // Whether the desktop draws translucent windows; asked each time the window is shown.
  void setCompositorCheck(std::function<bool()> isComposited) { m_isComposited = std::move(isComposited); }

  // Whether an alert hangs on the window.
  [[nodiscard]] bool hasAttachedSheet() const;

  // Shows it in front; with `activate`, takes the keyboard.
  void orderFront(bool activate);

  // Told instead of closing, when the desktop asks the window to close.
  std::function<void()> onCloseRequest;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void layOut();

  std::unique_ptr<Ui::AgentEntryWindow> m_ui;
  QWidget* m_content;
  std::function<bool()> m_isComposited;
  int m_shadowMargin{0};
  QPointF m_origin;            // of the frame, bottom left
  QPainterPath m_maskOutline;  // what the mask was made from; empty while there is none
};

}  // namespace quillo
