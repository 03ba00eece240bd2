#include "platform/linux/desktop/Display.h"

#include "platform/linux/desktop/X11.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>

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

static const char* lineWithoutDisplay = nullptr;
static QtMessageHandler handlerBefore = nullptr;

[[noreturn]] static void endWithoutDisplay() {
  std::fprintf(stderr, "%s\n", lineWithoutDisplay);
  // Nothing has begun that would have to end.
  std::_Exit(1);
}

static void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type == QtFatalMsg) endWithoutDisplay();
  handlerBefore(type, context, text);
}

DisplayRequirement::DisplayRequirement(const char* line) {
  lineWithoutDisplay = line;
  // Where another platform was asked for by name, such as the offscreen one, it needs neither.
  if (!qEnvironmentVariableIsSet(platformVariable) && !isWaylandSession() && qEnvironmentVariableIsEmpty("DISPLAY"))
    endWithoutDisplay();
  handlerBefore = qInstallMessageHandler(handleMessage);
}

DisplayRequirement::~DisplayRequirement() {
  qInstallMessageHandler(handlerBefore);
}

bool isWaylandSession() {
  return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

bool showsThroughX() {
  return X11::connection() != nullptr;
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

bool compositorIsRunning() {
  xcb_connection_t* connection = X11::connection();
  if (!connection) return true;
  // Of the first screen, the only one that today's servers have. A compositor owns this selection while it runs.
  const xcb_atom_t selection = X11::atom("_NET_WM_CM_S0");
  const auto owner =
      X11::owned(xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr));
  return owner && owner->owner != XCB_NONE;
}

void keepOutOfTaskBar(WId window) {
  xcb_connection_t* connection = X11::connection();
  if (!connection) return;
  const xcb_atom_t state = X11::atom("_NET_WM_STATE");
  const xcb_atom_t skipped[] = {X11::atom("_NET_WM_STATE_SKIP_TASKBAR"), X11::atom("_NET_WM_STATE_SKIP_PAGER")};
  // Qt adds its own when it shows the window.
  xcb_change_property(connection, XCB_PROP_MODE_APPEND, static_cast<xcb_window_t>(window), state, XCB_ATOM_ATOM, 32, 2,
                      skipped);
}

}  // namespace quillo
