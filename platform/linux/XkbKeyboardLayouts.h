#pragma once

#include "platform/KeyboardLayout.h"

#include <QByteArray>

#include <memory>

struct xkb_context;
struct xkb_keymap;

namespace quillo {

// The layout of the X server's keyboard, also of the one that serves X programs in a Wayland session. Without an X
// server, the layout that xkbcommon has by default: after the XKB_DEFAULT_... variables, else the US one.
//
// Asks the server each time, over a connection that lasts only for the question. Needs no window system and no
// application object.
class XkbKeyboardLayouts final : public KeyboardLayouts {
 public:
  XkbKeyboardLayouts();
  ~XkbKeyboardLayouts() override;

  [[nodiscard]] std::shared_ptr<const KeyboardLayout> currentKeyboardLayout() override;
  // There is one type.
  [[nodiscard]] quint8 keyboardType() const override { return 0; }

  // The symbol of a key in the current layout, unshifted, by its name in keyboard maps ("j", "F13", "eacute"); empty
  // when it has none.
  [[nodiscard]] QByteArray keysymName(quint16 keyCode);

 private:
  struct FreeContext {
    void operator()(xkb_context* context) const;
  };
  std::unique_ptr<xkb_context, FreeContext> m_context;  // from the first question on
  std::shared_ptr<const class XkbKeyboardLayout> m_current;
};

}  // namespace quillo
