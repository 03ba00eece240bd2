#pragma once

#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

class QMenu;

namespace quillo {

// The program's icon in the desktop's tray. Visible as long as it lives and there is a tray; a tray that comes late, or
// dies and returns, shows it again. Main thread only.
//
// Rectangles are in Qt's global coordinates: device-independent, top-left based.
class StatusItem {
 public:
  virtual ~StatusItem() = default;

  // The image resource ":/quillo/images/NAME.png" (and NAME@2x.png). Of a template only the shape counts: it is drawn
  // in the colour that reads on the tray's background.
  virtual void setImage(const QString& name, bool isTemplate) = 0;
  // Draws the item as pressed.
  virtual void setHighlighted(bool highlighted) = 0;
  // `text` is asked when the tip is about to be shown. A tray that draws icons itself does not tell when; for such a
  // one it is asked here and at each change of the item, so set it again when the text has changed.
  virtual void setToolTip(std::function<QString()> text) = 0;
  // What any click but a primary one shows; null for nothing. Not owned, and must outlive its use.
  virtual void setMenu(QMenu* menu) = 0;
  // The width that the item asks for, in points. Trays have cells of a fixed size and may not grant it; geometry()
  // tells what the item has.
  virtual void setLength(double points) = 0;

  // Where the icon is; nothing while there is no tray, and with trays that do not tell.
  [[nodiscard]] virtual std::optional<QRectF> geometry() const = 0;
  // Where a window of the item belongs: geometry() where it is known, else around the pointer as it was at the last
  // click, else the corner of the screen where the tray is likely to be. Never outside all screens.
  [[nodiscard]] virtual QRectF anchor() const = 0;

  // Called for each press of the main button, the second of a double click as well. It counts as an action of the user:
  // a window that is shown, raised and activated from here gets the keyboard, whatever had it before.
  virtual void onPrimaryClick(std::function<void()> callback) = 0;
  // Called after geometry() has changed, be it to or from nothing.
  virtual void onGeometryChanged(std::function<void()> callback) = 0;
};

}  // namespace quillo
