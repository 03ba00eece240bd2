#include "platform/linux/desktop/RawButtonPresses.h"

#include "foundation/Log.h"
#include "platform/linux/desktop/Display.h"
#include "platform/linux/desktop/X11.h"

#include <QSocketNotifier>

#include <xcb/xcb.h>
// The header names a field "explicit".
#define explicit explicit_
#include <xcb/xinput.h>
#undef explicit

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using X11::owned;

namespace {

// Windows nest a few levels deep; a tree that does not end is no reason to hang.
constexpr int deepestWindow = 64;
constexpr uint32_t leftButton = 1;

// Whether the window was made by this program's own connection for windows: the server gives each client a range of
// identifiers.
bool isOwnWindow(xcb_window_t window) {
  if (!X11::connection()) return false;
  const xcb_setup_t* setup = xcb_get_setup(X11::connection());
  return setup && (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

}  // namespace

class RawButtonPresses::Connection {
 public:
  // Null where there is no X server or it lacks the extension.
  static std::shared_ptr<Connection> open();
  ~Connection() { xcb_disconnect(m_connection); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  [[nodiscard]] bool isBroken() const { return xcb_connection_has_error(m_connection) != 0; }
  void setHandler(std::function<void()> handler);

 private:
  explicit Connection(xcb_connection_t* connection);
  [[nodiscard]] bool hasExtension();
  // Takes all events that have arrived; whether a press of the left button was among them.
  [[nodiscard]] bool takePress();
  void readEvents();
  [[nodiscard]] bool pointerIsOnOwnWindow() const;

  xcb_connection_t* m_connection;
  xcb_window_t m_root{0};
  uint8_t m_extensionOpcode{0};
  QSocketNotifier m_notifier;
  std::function<void()> m_handler;
};

RawButtonPresses::Connection::Connection(xcb_connection_t* connection)
    : m_connection(connection), m_notifier(xcb_get_file_descriptor(connection), QSocketNotifier::Read) {
  QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { readEvents(); });
}

std::shared_ptr<RawButtonPresses::Connection> RawButtonPresses::Connection::open() {
  if (!X11::connection()) return nullptr;
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return nullptr;
  }
  std::shared_ptr<Connection> opened(new Connection(connection));
  return opened->hasExtension() ? opened : nullptr;
}

bool RawButtonPresses::Connection::hasExtension() {
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(m_connection, &xcb_input_id);
  if (!extension || !extension->present) return false;
  // Raw events reach listeners during other programs' grabs (an open menu) from version 2.1 on.
  const auto version =
      owned(xcb_input_xi_query_version_reply(m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
  if (!version || version->major_version < 2) return false;
  m_extensionOpcode = extension->major_opcode;
  m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
  return true;
}

void RawButtonPresses::Connection::setHandler(std::function<void()> handler) {
  m_handler = std::move(handler);
  const struct {
    xcb_input_event_mask_t head;
    uint32_t mask;
  } selection = {{XCB_INPUT_DEVICE_ALL_MASTER, 1}, m_handler ? uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS} : 0};
  xcb_input_xi_select_events(m_connection, m_root, 1, &selection.head);
  xcb_flush(m_connection);
}

bool RawButtonPresses::Connection::takePress() {
  bool pressed = false;
  // Ends with what has arrived: this reads no more than is there.
  while (const auto event = owned(xcb_poll_for_event(m_connection))) {
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC) continue;
    const auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event.get());
    if (generic->extension != m_extensionOpcode || generic->event_type != XCB_INPUT_RAW_BUTTON_PRESS) continue;
    pressed |= reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event.get())->detail == leftButton;
  }
  return pressed;
}

void RawButtonPresses::Connection::readEvents() {
  // Asking for the pointer may bring further presses in without the socket's saying so. Each round takes one press at
  // least, so fingers set the bound.
  while (takePress()) {
    // The handler may end the registration, and with it the handler.
    if (const auto handler = m_handler; handler && !pointerIsOnOwnWindow()) handler();
  }
  // A broken socket is always readable.
  if (isBroken()) m_notifier.setEnabled(false);
}

bool RawButtonPresses::Connection::pointerIsOnOwnWindow() const {
  xcb_window_t window = m_root;
  for (int depth = 0; depth < deepestWindow; ++depth) {
    const auto reply = owned(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, window), nullptr));
    if (!reply || reply->child == XCB_WINDOW_NONE) return false;
    window = reply->child;
    if (isOwnWindow(window)) return true;
  }
  return false;
}

RawButtonPresses::RawButtonPresses() = default;
RawButtonPresses::~RawButtonPresses() = default;

std::unique_ptr<Registration> RawButtonPresses::addGlobalMonitor(std::function<void()> handler) {
  // Xwayland tells of presses on the windows of X programs only: of a monitor that misses most, nobody could know.
  if (isWaylandSession()) return nullptr;
  if (!m_connection || m_connection->isBroken()) m_connection = Connection::open();
  if (!m_connection) {
    QLLogDebug(u"Clicks in other programs cannot be seen here"_s);
    return nullptr;
  }
  m_connection->setHandler(std::move(handler));
  return std::make_unique<Registration>([connection = std::weak_ptr(m_connection)] {
    if (const auto open = connection.lock()) open->setHandler({});
  });
}

}  // namespace quillo
