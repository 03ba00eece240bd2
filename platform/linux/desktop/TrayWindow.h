#pragma once

#include <QAbstractNativeEventFilter>
#include <QColor>
#include <QObject>
#include <QRectF>

#include <functional>
#include <optional>
#include <vector>

struct xcb_connection_t;

namespace quillo {

// The window that shows this process's icon in an X tray. Trays tell nobody when they move an icon, and they move a
// wrapper of theirs and not the icon's window, so this watches all the windows around it.
//
// Without an X server, or in a tray that draws icons itself, there is no such window and this stays silent. A process
// has one status item, so there is one window to find.
class TrayWindow final : public QObject, public QAbstractNativeEventFilter {
 public:
  // Both are called from the event loop: `onChange` after the window came, went, or moved, `onRepaint` after a tray has
  // had it painted anew, which trays do when they have painted what is around it.
  TrayWindow(std::function<void()> onChange, std::function<void()> onRepaint);
  ~TrayWindow() override;

  // Whether the icon is to be embedded by a tray, be it waiting for one, and not to be drawn by it.
  [[nodiscard]] static bool isEmbeddable();
  // In pixels of the X screen; nothing while the window is in no tray.
  [[nodiscard]] std::optional<QRectF> pixels() const { return m_pixels; }
  // The colour the tray asks its icons to have, else black or white after the panel's background as it looks now;
  // nothing when neither can be told.
  [[nodiscard]] std::optional<QColor> foreground() const;

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private:
  using Window = unsigned int;

  void repaintedLater();
  void refreshLater();
  void refresh();
  [[nodiscard]] std::vector<Window> ancestorsOf(Window window) const;
  [[nodiscard]] std::optional<QColor> colourWantedByTray() const;
  [[nodiscard]] std::optional<QColor> backgroundAround(const QRect& icon, const QRect& panel) const;

  std::function<void()> m_onChange;
  std::function<void()> m_onRepaint;
  xcb_connection_t* m_connection{nullptr};  // Qt's; null without an X server
  Window m_icon{0};
  std::vector<Window> m_ancestors;  // the wrapper first, the panel last
  std::optional<QRectF> m_pixels;
  bool m_refreshing{false};
  bool m_isRepainted{false};
};

}  // namespace quillo
