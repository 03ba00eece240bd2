#include "platform/linux/XkbKeyboardLayouts.h"

#include "platform/linux/XkbKeyboardLayout.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace quillo {

namespace {

struct KeymapOfServer {
  XkbKeyboardLayout::Keymap keymap;
  quint32 layout{0};
};

KeymapOfServer askServer(xkb_context* context, xcb_connection_t* connection) {
  if (xcb_connection_has_error(connection) ||
      !xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                   XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr))
    return {};
  const int32_t device = xkb_x11_get_core_keyboard_device_id(connection);
  if (device < 0) return {};
  XkbKeyboardLayout::Keymap keymap(
      xkb_x11_keymap_new_from_device(context, connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
  if (!keymap) return {};
  xkb_state* state = xkb_x11_state_new_from_device(keymap.get(), connection, device);
  if (!state) return {};
  const quint32 layout = xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE);
  xkb_state_unref(state);
  return {std::move(keymap), layout};
}

KeymapOfServer currentKeymap(xkb_context* context) {
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  auto found = askServer(context, connection);
  xcb_disconnect(connection);
  if (!found.keymap) found.keymap.reset(xkb_keymap_new_from_names(context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS));
  return found;
}

// Where not even xkbcommon's own data is installed.
class LayoutWithoutKeys final : public KeyboardLayout {
 public:
  QString localizedName() const override { return {}; }
  OSStatus translate(quint16, quint16, quint32, quint32, quint32, quint32&, std::span<char16_t>,
                     qsizetype& length) const override {
    length = 0;
    return HotKeyStatus::invalid;
  }
};

}  // namespace

void XkbKeyboardLayouts::FreeContext::operator()(xkb_context* context) const {
  xkb_context_unref(context);
}

XkbKeyboardLayouts::XkbKeyboardLayouts() = default;
XkbKeyboardLayouts::~XkbKeyboardLayouts() = default;

std::shared_ptr<const KeyboardLayout> XkbKeyboardLayouts::currentKeyboardLayout() {
  static const auto none = std::make_shared<const LayoutWithoutKeys>();
  if (!m_context) m_context.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
  if (!m_context) return none;
  // What is wrong with a keyboard map is nothing for the terminal of a program that wants a key's name.
  xkb_context_set_log_level(m_context.get(), XKB_LOG_LEVEL_CRITICAL);
  auto [keymap, index] = currentKeymap(m_context.get());
  if (!keymap) {
    m_current.reset();
    return none;
  }
  auto layout = std::make_shared<const XkbKeyboardLayout>(std::move(keymap), index);
  if (!m_current || m_current->fingerprint() != layout->fingerprint()) m_current = std::move(layout);
  return m_current;
}

QByteArray XkbKeyboardLayouts::keysymName(quint16 keyCode) {
  static_cast<void>(currentKeyboardLayout());
  char name[64];
  const quint32 symbol = m_current ? m_current->keysym(keyCode) : quint32{XKB_KEY_NoSymbol};
  if (symbol == XKB_KEY_NoSymbol || xkb_keysym_get_name(symbol, name, sizeof name) <= 0) return {};
  return name;
}

}  // namespace quillo
