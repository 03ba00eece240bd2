#include "platform/linux/TrayWindow.h"

#include "platform/linux/StatusImage.h"

#include <QApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <stdlib.h>

#include <algorithm>
#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// A tray nests its icons two to five windows deep.
constexpr int deepestAncestor = 32;

struct Free {
  void operator()(void* reply) const { free(reply); }
};
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
  return std::unique_ptr<T, Free>(reply);
}

// The window that Qt makes for an icon in an X tray. It is a widget of a private class, so only its name tells.
xcb_window_t iconWindow() {
  for (const auto* widget : QApplication::topLevelWidgets())
    if (qstrcmp(widget->metaObject()->className(), "QSystemTrayIconSys") == 0)
      return static_cast<xcb_window_t>(widget->internalWinId());
  return 0;
}

xcb_window_t rootWindow(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData());
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  if (!reply) return XCB_ATOM_NONE;
  return reply->atom;
}

}  // namespace

TrayWindow::TrayWindow(std::function<void()> onChange) : m_onChange(std::move(onChange)) {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11 || !x11->connection()) return;
  m_connection = x11->connection();
  m_root = rootWindow(m_connection);
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
    default:
      break;
  }
  return false;
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
  for (const Window window : m_ancestors) {
    // The mask is this connection's own, so nothing of the tray's is overwritten. The window may be gone by now.
    const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    owned(xcb_request_check(m_connection,
                            xcb_change_window_attributes_checked(m_connection, window, XCB_CW_EVENT_MASK, &mask)));
  }
  // Directly below the root, the window waits for a tray.
  m_pixels = m_ancestors.empty() ? std::nullopt : rectOf(m_icon);
  if (m_pixels != before) m_onChange();
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

std::optional<QRectF> TrayWindow::rectOf(Window window) const {
  const auto size = xcb_get_geometry(m_connection, window);
  const auto corner = xcb_translate_coordinates(m_connection, window, m_root, 0, 0);
  const auto sizeReply = owned(xcb_get_geometry_reply(m_connection, size, nullptr));
  const auto cornerReply = owned(xcb_translate_coordinates_reply(m_connection, corner, nullptr));
  if (!sizeReply || !cornerReply) return {};
  return QRectF(cornerReply->dst_x, cornerReply->dst_y, sizeReply->width, sizeReply->height);
}

std::optional<QColor> TrayWindow::foreground() const {
  if (!m_connection || !m_pixels) return {};
  if (const auto wanted = colourWantedByTray()) return wanted;
  const auto panel = rectOf(m_ancestors.back());
  if (!panel) return {};
  return backgroundAround(m_pixels->toRect(), panel->toRect());
}

std::optional<QColor> TrayWindow::colourWantedByTray() const {
  const auto selection = atom(m_connection, "_NET_SYSTEM_TRAY_S0");
  const auto owner =
      owned(xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, selection), nullptr));
  if (!owner || owner->owner == XCB_WINDOW_NONE) return {};
  // Red, green and blue, 16 bits each, of normal icons; nine more numbers for errors, warnings and success follow.
  const auto property = owned(
      xcb_get_property_reply(m_connection,
                             xcb_get_property(m_connection, 0, owner->owner,
                                              atom(m_connection, "_NET_SYSTEM_TRAY_COLORS"), XCB_ATOM_CARDINAL, 0, 12),
                             nullptr));
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
  const auto root = rectOf(m_root);
  if (!root) return {};
  std::vector<QColor> colours;
  for (const auto& side : sides) appendPixels(side & panel & root->toRect(), colours);
  if (colours.empty()) return {};
  // The middle one, so that a neighbour's icon that reaches to its edge does not count.
  const auto middle = colours.begin() + static_cast<std::ptrdiff_t>(colours.size() / 2);
  std::nth_element(colours.begin(), middle, colours.end(),
                   [](const auto& a, const auto& b) { return qGray(a.rgb()) < qGray(b.rgb()); });
  return readableOn(*middle);
}

void TrayWindow::appendPixels(const QRect& rect, std::vector<QColor>& colours) const {
  if (rect.isEmpty()) return;
  const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<int16_t>(rect.x()),
                                    static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
                                    static_cast<uint16_t>(rect.height()), ~0U);
  const auto image = owned(xcb_get_image_reply(m_connection, cookie, nullptr));
  // Other depths are long out of use, and their pixels would need a colour map.
  if (!image || (image->depth != 24 && image->depth != 32)) return;
  const auto* bytes = xcb_get_image_data(image.get());
  const int length = xcb_get_image_data_length(image.get());
  const bool isLittleEndian = xcb_get_setup(m_connection)->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
  for (int i = 0; i + 4 <= length; i += 4) {
    const auto channel = [&](int significance) {
      return bytes[i + (isLittleEndian ? significance : 3 - significance)];
    };
    colours.emplace_back(channel(2), channel(1), channel(0));
  }
}

}  // namespace quillo
