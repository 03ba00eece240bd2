#include "platform/linux/desktop/X11.h"

#include <QGuiApplication>
#include <QHash>
#include <QtEndian>

#include <xcb/xcb.h>

#include <cstring>

namespace quillo::X11 {

static constexpr char traySelection[] = "_NET_SYSTEM_TRAY_S0";
// Asked for together, with the first: each would be a wait for the server.
static constexpr const char* usualAtoms[] = {traySelection,
                                             "MANAGER",
                                             "_NET_SYSTEM_TRAY_COLORS",
                                             "_NET_CLIENT_LIST",
                                             "_NET_WM_WINDOW_TYPE",
                                             "_NET_WM_WINDOW_TYPE_DOCK",
                                             "_NET_WM_CM_S0",
                                             "_NET_WM_STATE",
                                             "_NET_WM_STATE_SKIP_TASKBAR",
                                             "_NET_WM_STATE_SKIP_PAGER",
                                             "WM_PROTOCOLS",
                                             "WM_TAKE_FOCUS"};

xcb_connection_t* connection() {
  const auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  return x11 ? x11->connection() : nullptr;
}

Window rootWindow() {
  xcb_connection_t* c = connection();
  return c ? xcb_setup_roots_iterator(xcb_get_setup(c)).data->root : 0;
}

unsigned int atom(const QByteArray& name) {
  xcb_connection_t* c = connection();
  if (!c) return 0;
  // A program has one connection in its life, and an atom keeps its number as long as the server lives.
  static const QHash<QByteArray, xcb_atom_t> known = [c] {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* usual : usualAtoms)
      cookies.push_back(xcb_intern_atom(c, 0, static_cast<uint16_t>(std::strlen(usual)), usual));
    QHash<QByteArray, xcb_atom_t> atoms;
    for (size_t i = 0; i < cookies.size(); ++i)
      if (const auto reply = owned(xcb_intern_atom_reply(c, cookies[i], nullptr)))
        atoms.insert(usualAtoms[i], reply->atom);
    return atoms;
  }();
  return known.value(name, XCB_ATOM_NONE);
}

Window trayOwner() {
  xcb_connection_t* c = connection();
  if (!c) return 0;
  const auto reply = owned(xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom(traySelection)), nullptr));
  return reply ? reply->owner : 0;
}

bool announcesTray(const void* event) {
  const auto* message = static_cast<const xcb_client_message_event_t*>(event);
  return (message->response_type & 0x7f) == XCB_CLIENT_MESSAGE && message->format == 32 &&
         message->type == atom("MANAGER") && message->data.data32[1] == atom(traySelection);
}

std::optional<QRect> rectOf(Window window) {
  xcb_connection_t* c = connection();
  if (!c || !window) return {};
  const auto size = xcb_get_geometry(c, window);
  const auto corner = xcb_translate_coordinates(c, window, rootWindow(), 0, 0);
  const auto sizeReply = owned(xcb_get_geometry_reply(c, size, nullptr));
  const auto cornerReply = owned(xcb_translate_coordinates_reply(c, corner, nullptr));
  if (!sizeReply || !cornerReply) return {};
  return QRect(cornerReply->dst_x, cornerReply->dst_y, sizeReply->width, sizeReply->height);
}

// The 32-bit numbers of a window's property, `most` at most.
static QList<uint32_t> numbersOf(Window window, const QByteArray& name, uint32_t most) {
  xcb_connection_t* c = connection();
  if (!c) return {};
  const auto cookie = xcb_get_property(c, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, most);
  const auto reply = owned(xcb_get_property_reply(c, cookie, nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* first = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
  return {first, first + xcb_get_property_value_length(reply.get()) / 4};
}

QList<QRect> panels() {
  constexpr uint32_t mostWindows = 1024;
  constexpr uint32_t mostTypes = 16;
  const uint32_t dock = atom("_NET_WM_WINDOW_TYPE_DOCK");
  QList<QRect> found;
  for (const Window window : numbersOf(rootWindow(), "_NET_CLIENT_LIST", mostWindows)) {
    if (!numbersOf(window, "_NET_WM_WINDOW_TYPE", mostTypes).contains(dock)) continue;
    if (const auto rect = rectOf(window)) found << *rect;
  }
  return found;
}

static void appendPixels(xcb_connection_t* c, xcb_get_image_cookie_t cookie, std::vector<QRgb>& pixels) {
  const auto image = owned(xcb_get_image_reply(c, cookie, nullptr));
  // Other depths are long out of use, and their pixels would need a colour map.
  if (!image || (image->depth != 24 && image->depth != 32)) return;
  const auto* bytes = xcb_get_image_data(image.get());
  const int length = xcb_get_image_data_length(image.get());
  const bool isLittleEndian = xcb_get_setup(c)->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
  // A whole panel's, some ten thousand, while the program starts.
  pixels.reserve(pixels.size() + static_cast<size_t>(length / 4));
  for (int i = 0; i + 4 <= length; i += 4)
    pixels.push_back((isLittleEndian ? qFromLittleEndian<QRgb>(bytes + i) : qFromBigEndian<QRgb>(bytes + i)) |
                     0xff000000);
}

std::vector<QRgb> pixelsOf(const QList<QRect>& rects) {
  std::vector<QRgb> pixels;
  xcb_connection_t* c = connection();
  const auto screen = rectOf(rootWindow());
  if (!c || !screen) return pixels;
  std::vector<xcb_get_image_cookie_t> cookies;
  for (const QRect& rect : rects) {
    // Outside the screen there are none, and asking for them is an error.
    const QRect part = rect & *screen;
    if (part.isEmpty()) continue;
    cookies.push_back(xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, rootWindow(), static_cast<int16_t>(part.x()),
                                    static_cast<int16_t>(part.y()), static_cast<uint16_t>(part.width()),
                                    static_cast<uint16_t>(part.height()), ~0U));
  }
  for (const auto cookie : cookies) appendPixels(c, cookie, pixels);
  return pixels;
}

}  // namespace quillo::X11
