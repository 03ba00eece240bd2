#include "platform/linux/desktop/KeyboardHints.h"

#include "platform/linux/desktop/X11.h"

#include <QEvent>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <vector>

namespace quillo {

using X11::owned;

// WM_HINTS of the Inter-Client Communication Conventions Manual, 4.1.2.4: nine numbers, of which the first says which
// of the others count, and the second whether the window takes keys.
static constexpr uint32_t hintCount = 9;
static constexpr uint32_t inputHint = 1;

static void setTakesKeys(xcb_window_t window, bool takes) {
  xcb_connection_t* c = X11::connection();
  const auto reply = owned(xcb_get_property_reply(
      c, xcb_get_property(c, 0, window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 0, hintCount), nullptr));
  std::array<uint32_t, hintCount> hints{};
  if (reply && reply->format == 32) {
    const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    std::copy_n(values,
                std::min<size_t>(static_cast<size_t>(xcb_get_property_value_length(reply.get())) / 4, hintCount),
                hints.begin());
  }
  hints[0] |= inputHint;
  hints[1] = takes ? 1 : 0;
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32, hintCount,
                      hints.data());
}

// A window that lists WM_TAKE_FOCUS takes the keyboard by itself when it is told to, whatever its hints say.
static void setTakesFocusItself(xcb_window_t window, bool takes) {
  constexpr uint32_t mostProtocols = 32;
  xcb_connection_t* c = X11::connection();
  const xcb_atom_t protocols = X11::atom("WM_PROTOCOLS");
  const xcb_atom_t takeFocus = X11::atom("WM_TAKE_FOCUS");
  const auto reply = owned(
      xcb_get_property_reply(c, xcb_get_property(c, 0, window, protocols, XCB_ATOM_ATOM, 0, mostProtocols), nullptr));
  if (!reply || reply->format != 32) return;
  const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
  std::vector<xcb_atom_t> list(first, first + xcb_get_property_value_length(reply.get()) / 4);
  list.erase(std::remove(list.begin(), list.end(), takeFocus), list.end());
  if (takes) list.push_back(takeFocus);
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, protocols, XCB_ATOM_ATOM, 32,
                      static_cast<uint32_t>(list.size()), list.data());
}

static void setTakesKeyboard(QWindow& window, bool takes) {
  const auto identifier = static_cast<xcb_window_t>(window.winId());
  setTakesKeys(identifier, takes);
  setTakesFocusItself(identifier, takes);
  xcb_flush(X11::connection());
}

namespace {

// Gives the window back what it was without. The pointer comes before any click.
class KeyboardReturn final : public QObject {
 public:
  explicit KeyboardReturn(QWindow& window) : QObject(&window) { window.installEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    const QEvent::Type type = event->type();
    if (type == QEvent::Enter || type == QEvent::FocusIn || type == QEvent::Hide) {
      watched->removeEventFilter(this);
      if (X11::connection()) setTakesKeyboard(*static_cast<QWindow*>(watched), true);
      deleteLater();
    }
    return false;
  }
};

}  // namespace

void leaveKeyboard(QWindow& window) {
  if (!X11::connection()) return;
  setTakesKeyboard(window, false);
  new KeyboardReturn(window);
}

}  // namespace quillo
