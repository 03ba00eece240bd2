#include "platform/linux/desktop/Display.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

static constexpr char platformVariable[] = "QT_QPA_PLATFORM";

static bool xServerAnswers() {
  // Not asked where none is named: the library would try the first local one, which may be somebody else's.
  if (qEnvironmentVariableIsEmpty("DISPLAY")) return false;
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  const bool answers = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return answers;
}

bool displayIsReachable() {
  // Another platform was asked for by name, such as the offscreen one: it needs neither.
  return qEnvironmentVariableIsSet(platformVariable) || isWaylandSession() || xServerAnswers();
}

bool isWaylandSession() {
  return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

DisplayChoice chooseDisplay() {
  if (qEnvironmentVariableIsSet(platformVariable)) return DisplayChoice::ByUser;
  if (!isWaylandSession()) return DisplayChoice::X11;
  if (!xServerAnswers()) return DisplayChoice::Wayland;
  qputenv(platformVariable, "xcb");
  return DisplayChoice::Xwayland;
}

void restoreEnvironment(DisplayChoice choice) {
  if (choice == DisplayChoice::Xwayland) qunsetenv(platformVariable);
}

QString description(DisplayChoice choice) {
  switch (choice) {
    case DisplayChoice::ByUser:
      return u"Display: %1, as QT_QPA_PLATFORM says"_s.arg(QGuiApplication::platformName());
    case DisplayChoice::X11:
      return u"Display: X11"_s;
    case DisplayChoice::Xwayland:
      return u"Display: X11 through Xwayland, so that the entry window can be placed"_s;
    case DisplayChoice::Wayland:
      return u"Display: Wayland without Xwayland, the compositor places the entry window"_s;
  }
  return {};
}

// Of the first screen, the only one that today's servers have. A compositor owns this selection while it runs.
static xcb_atom_t compositorSelection(xcb_connection_t* connection) {
  static constexpr char name[] = "_NET_WM_CM_S0";
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof name - 1, name), nullptr), &std::free);
  return atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool compositorIsRunning() {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) return true;
  xcb_connection_t* c = x11->connection();
  // The connection is the process's only one, and an atom stays what it is: asked once, as this is asked whenever a
  // window shows.
  static xcb_atom_t selection = XCB_ATOM_NONE;
  if (selection == XCB_ATOM_NONE) selection = compositorSelection(c);
  if (selection == XCB_ATOM_NONE) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
      xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, selection), nullptr), &std::free);
  return owner && owner->owner != XCB_NONE;
}

}  // namespace quillo
