#pragma once

#include "platform/KeyboardLayout.h"

#include <QByteArray>

#include <memory>

struct xkb_keymap;

namespace quillo {

// One layout of a keyboard map: a map may have several, between which the user switches.
class XkbKeyboardLayout final : public KeyboardLayout {
 public:
  struct FreeKeymap {
    void operator()(xkb_keymap* keymap) const;
  };
  using Keymap = std::unique_ptr<xkb_keymap, FreeKeymap>;

  // The map must not be null.
  XkbKeyboardLayout(Keymap keymap, quint32 index);

  [[nodiscard]] QString localizedName() const override;
  OSStatus translate(quint16 keyCode, quint16 action, quint32 modifierKeyState, quint32 keyboardType, quint32 options,
                     quint32& deadKeyState, std::span<char16_t> buffer, qsizetype& length) const override;

  // The unshifted symbol of a key; 0 when it has none.
  [[nodiscard]] quint32 keysym(quint16 keyCode) const;
  // Equal exactly for layouts that do not differ.
  [[nodiscard]] const QByteArray& fingerprint() const { return m_fingerprint; }

 private:
  const Keymap m_keymap;
  const quint32 m_index;
  const QByteArray m_fingerprint;
};

}  // namespace quillo
