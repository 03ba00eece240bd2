#include "platform/linux/desktop/Display.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace quillo {

bool displayIsReachable() {
  // Another platform was asked for by name, such as the offscreen one: it needs neither.
  if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) return true;
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  const bool reachable = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return reachable;
}

bool compositorIsRunning() {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) return true;
  xcb_connection_t* c = x11->connection();
  // Of the first screen, the only one that today's servers have. A compositor owns this selection while it runs.
  static constexpr char name[] = "_NET_WM_CM_S0";
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, sizeof name - 1, name), nullptr), &std::free);
  if (!atom) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
      xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom->atom), nullptr), &std::free);
  return owner && owner->owner != XCB_NONE;
}

}  // namespace quillo
