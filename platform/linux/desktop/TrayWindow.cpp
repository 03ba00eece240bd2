#include "platform/linux/desktop/TrayWindow.h"

#include "platform/QtInternals.h"
#include "platform/linux/desktop/StatusImage.h"
#include "platform/linux/desktop/X11.h"

#include <QApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <algorithm>

namespace quillo {

using X11::owned;

namespace {

// A tray nests its icons two to five windows deep.
constexpr int deepestAncestor = 32;

// The window that Qt makes for an icon in an X tray, or null.
const QWidget* iconWidget() {
  for (const auto* widget : QApplication::topLevelWidgets())
    if (widget->inherits(QtInternals::trayIconWindow)) return widget;
  return nullptr;
}

xcb_window_t iconWindow() {
  const QWidget* widget = iconWidget();
  return widget ? static_cast<xcb_window_t>(widget->internalWinId()) : 0;
}

}  // namespace

TrayWindow::TrayWindow(std::function<void()> onChange, std::function<void()> onRepaint)
    : m_onChange(std::move(onChange)), m_onRepaint(std::move(onRepaint)) {
  m_connection = X11::connection();
  if (!m_connection) return;
  qApp->installNativeEventFilter(this);
  refreshLater();
}

TrayWindow::~TrayWindow() {
  if (m_connection && qApp) qApp->removeNativeEventFilter(this);
}

bool TrayWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  const auto concerns = [this](xcb_window_t window) {
    return window == m_icon || std::find(m_ancestors.begin(), m_ancestors.end(), window) != m_ancestors.end();
  };
  switch (event->response_type & 0x7f) {
    case XCB_REPARENT_NOTIFY: {
      // Perhaps of an icon window that is still unknown here, on its way into a tray. The program's other windows go
      // into the window manager's frames, and must not wait for a look at the tray whenever they show.
      const xcb_window_t window = reinterpret_cast<const xcb_reparent_notify_event_t*>(event)->window;
      if (concerns(window) || window == iconWindow()) refreshLater();
      break;
    }
    case XCB_CONFIGURE_NOTIFY:
      if (concerns(reinterpret_cast<const xcb_configure_notify_event_t*>(event)->window)) refreshLater();
      break;
    case XCB_DESTROY_NOTIFY:
      if (concerns(reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window)) refreshLater();
      break;
    case XCB_UNMAP_NOTIFY:
      if (concerns(reinterpret_cast<const xcb_unmap_notify_event_t*>(event)->window)) refreshLater();
      break;
    case XCB_MAP_NOTIFY:
      if (concerns(reinterpret_cast<const xcb_map_notify_event_t*>(event)->window)) refreshLater();
      break;
    case XCB_EXPOSE: {
      const auto* expose = reinterpret_cast<const xcb_expose_event_t*>(event);
      if (expose->window == m_icon && expose->count == 0) repaintedLater();
      break;
    }
    default:
      break;
  }
  return false;
}

void TrayWindow::repaintedLater() {
  if (std::exchange(m_isRepainted, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        m_isRepainted = false;
        m_onRepaint();
      },
      Qt::QueuedConnection);
}

void TrayWindow::refreshLater() {
  if (std::exchange(m_refreshing, true)) return;
  // A panel that rearranges its icons sends a burst of events; one look at the end is enough.
  QMetaObject::invokeMethod(this, &TrayWindow::refresh, Qt::QueuedConnection);
}

void TrayWindow::refresh() {
  m_refreshing = false;
  const auto before = m_pixels;
  m_icon = iconWindow();
  m_ancestors = m_icon ? ancestorsOf(m_icon) : std::vector<Window>();
  // The mask is this connection's own, so nothing of the tray's is overwritten. A window may be gone by now.
  const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  for (const Window window : m_ancestors)
    xcb_discard_reply(m_connection,
                      xcb_change_window_attributes_checked(m_connection, window, XCB_CW_EVENT_MASK, &mask).sequence);
  // Directly below the root, the window waits for a tray.
  m_pixels.reset();
  if (const auto rect = m_ancestors.empty() ? std::nullopt : X11::rectOf(m_icon)) m_pixels = *rect;
  if (m_pixels != before) m_onChange();
}

bool TrayWindow::isEmbeddable() {
  return iconWidget();
}

std::vector<TrayWindow::Window> TrayWindow::ancestorsOf(Window window) const {
  std::vector<Window> found;
  for (int depth = 0; depth < deepestAncestor; ++depth) {
    const auto reply = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    // Half a chain is no place in a tray: the icon or something around it is just being destroyed.
    if (!reply) return {};
    if (reply->parent == XCB_WINDOW_NONE || reply->parent == reply->root) return found;
    found.push_back(reply->parent);
    window = reply->parent;
  }
  return found;
}

std::optional<QColor> TrayWindow::foreground() const {
  if (!m_connection || !m_pixels) return {};
  if (const auto wanted = colourWantedByTray()) return wanted;
  const auto panel = X11::rectOf(m_ancestors.back());
  if (!panel) return {};
  return backgroundAround(m_pixels->toRect(), *panel);
}

std::optional<QColor> TrayWindow::colourWantedByTray() const {
  const Window owner = X11::trayOwner();
  if (!owner) return {};
  // Red, green and blue, 16 bits each, of normal icons; nine more numbers for errors, warnings and success follow.
  const auto cookie =
      xcb_get_property(m_connection, 0, owner, X11::atom("_NET_SYSTEM_TRAY_COLORS"), XCB_ATOM_CARDINAL, 0, 12);
  const auto property = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
  if (!property || property->format != 32 || xcb_get_property_value_length(property.get()) < 12) return {};
  const auto* channels = static_cast<const uint32_t*>(xcb_get_property_value(property.get()));
  const auto eightBits = [](uint32_t channel) { return static_cast<int>(std::min(channel, 0xffffU) >> 8); };
  return QColor(eightBits(channels[0]), eightBits(channels[1]), eightBits(channels[2]));
}

std::optional<QColor> TrayWindow::backgroundAround(const QRect& icon, const QRect& panel) const {
  // One pixel wide along each side, where the panel shows between icons, and never outside the panel.
  const QRect sides[] = {
      QRect(icon.left() - 1, icon.top(), 1, icon.height()),
      QRect(icon.right() + 1, icon.top(), 1, icon.height()),
      QRect(icon.left(), icon.top() - 1, icon.width(), 1),
      QRect(icon.left(), icon.bottom() + 1, icon.width(), 1),
  };
  QList<QRect> shown;
  for (const auto& side : sides) shown << (side & panel);
  return readableOnMost(X11::pixelsOf(shown));
}

}  // namespace quillo
