#pragma once

#include "controls/CachedDrawing.h"
#include "entry/EntryWindowDesktop.h"

#include <QPainterPath>
#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class AgentEntryWindow;
}

namespace quillo {

struct JournalPanel;

// The borderless window that hangs under the status item: its look, its frame, taking the keyboard, and the line of
// place and weather below the text with its switch. What it does is the controller's.
//
// The frame is the window as the layout knows it, 328 x 268 points. Where a compositor draws translucent windows, the
// widget is larger by a margin in which it paints its own shadow; elsewhere it is cut to its outline.
class AgentEntryWindow : public QWidget {
  Q_OBJECT

 public:
  static constexpr QSizeF frameSize{328, 268};

  explicit AgentEntryWindow(EntryWindowDesktop desktop);
  ~AgentEntryWindow() override;

  [[nodiscard]] Ui::AgentEntryWindow& ui() { return *m_ui; }

  // In screen points, origin bottom left.
  [[nodiscard]] QRectF frame() const;
  void setFrameOrigin(QPointF origin);
  // Hangs the window under the status item, or stands it above: `edge`, of the window, is where the item is,
  // Qt::TopEdge or Qt::BottomEdge. With the item below, the content stands higher by the height of the arrow, which
  // points at `arrowX`, in screen points from the left, or as near to it as the window's corners allow.
  void setPlace(QPointF origin, Qt::Edge edge, double arrowX);

  // The frame of the text area, from the bottom left of the window's frame.
  void setScrollBorderFrame(const QRectF& frame);
  // The text inside that area, from its bottom left.
  [[nodiscard]] QRectF textContentFrame() const { return m_textContentFrame; }

  // The line of place and weather.
  void setEntryMetadataText(const QString& text);
  [[nodiscard]] QString entryMetadataText() const { return m_entryMetadataText; }
  // Turns while a place is sought.
  void setShowsLocationSpinner(bool shows);
  [[nodiscard]] bool showsLocationSpinner() const { return m_showsLocationSpinner; }
  // Makes pin, band and the picture of the switch follow text, spinner and switch.
  void updateLocationIconState();
  // Shows or hides the band of the line, and makes room for it above.
  void setShowsMetadata(bool shows);
  [[nodiscard]] bool showsMetadata() const { return m_showsMetadata; }

  // The panel in the editor's place, and what it says of a text; nothing where there is none.
  void setJournalPanel(const JournalPanel& panel, const QString& aboutText);

  // Whether an alert or a panel of files hangs on the window.
  [[nodiscard]] bool hasAttachedSheet() const;
  // Takes what hangs on the window away, unanswered.
  void endSheets();
  // Hides the window, and with it what hangs on it.
  void orderOut();

  // Shows it in front; with `activate`, takes the keyboard. The text has the keyboard as soon as the window does.
  void orderFront(bool activate);
  // Takes the keyboard for whichever control had it last; the window must be shown.
  void makeKeyAndOrderFront();

  // Told when the desktop asks the window to close, which it does by hiding.
  std::function<void()> onCloseRequest;
  // Escape was pressed, and nothing in the window had a use for it.
  std::function<void()> onEscape;
  // The window took or lost the keyboard.
  std::function<void()> onActivationChange;

 protected:
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void moveEvent(QMoveEvent* event) override;

 private:
  void setShowsArrow(bool shows);
  void layOut();
  void drawShadow(QPainter& painter) const;
  void awakeFromNib();
  void layOutTextArea();
  // Of the frame within the widget.
  [[nodiscard]] QPoint frameOffset() const;

  std::unique_ptr<Ui::AgentEntryWindow> m_ui;
  QWidget* m_content;
  EntryWindowDesktop m_desktop;
  int m_shadowMargin{0};
  QPointF m_origin;        // of the frame, bottom left
  QPoint m_askedPosition;  // of the widget, top left
  QRectF m_textContentFrame;
  int m_textAreaHeight{0};  // of the area around the text, when it was last laid out
  QString m_entryMetadataText;
  bool m_showsLocationSpinner{false};
  bool m_showsMetadata{false};
  QPainterPath m_maskOutline;  // what the mask was made from; empty while there is none
  CachedDrawing m_background;  // the body, and the shadow around it
};

}  // namespace quillo
