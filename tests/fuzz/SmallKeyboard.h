#pragma once

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "platform/KeyboardLayout.h"

namespace quillo {

// A layout of the printable characters of ASCII, in the order of the key codes, and one dead key.
class SmallLayout final : public KeyboardLayout {
 public:
  static constexpr quint16 deadKey = 33;
  [[nodiscard]] QString localizedName() const override { return QStringLiteral("small"); }
  OSStatus translate(quint16 keyCode, quint16, quint32, quint32, quint32, quint32& deadKeyState,
                     std::span<char16_t> buffer, qsizetype& length) const override {
    if (keyCode >= 0x7F - u'!') return -1;
    buffer[0] = static_cast<char16_t>(u'!' + keyCode);
    length = keyCode == deadKey ? 0 : 1;
    deadKeyState = keyCode == deadKey ? 1 : 0;
    return 0;
  }
};

class SmallKeyboard final : public KeyboardLayouts {
 public:
  // For the rest of the program.
  static void plugIn() {
    static SmallKeyboard keyboard;
    PTKeyCodeTranslator::setKeyboardLayouts(&keyboard);
  }
  [[nodiscard]] std::shared_ptr<const KeyboardLayout> currentKeyboardLayout() override { return m_layout; }
  [[nodiscard]] quint8 keyboardType() const override { return 0; }

 private:
  std::shared_ptr<const KeyboardLayout> m_layout{std::make_shared<SmallLayout>()};
};

}  // namespace quillo
