#pragma once

#include "platform/HotKeys.h"

#include <QString>

#include <memory>
#include <span>

namespace quillo {

// A keyboard layout as it was when it was asked for: which characters its keys give. Immutable. Two layouts are the
// same exactly when they are the same object.
class KeyboardLayout {
 public:
  // Passed as the action: which character the key shows, not what pressing it would enter.
  static constexpr quint16 displayAction = 3;

  virtual ~KeyboardLayout() = default;

  [[nodiscard]] virtual QString localizedName() const = 0;

  // The characters of a virtual key code. Writes them to `buffer` and their number to `length`. With dead keys on
  // (options 0) a dead key sets `deadKeyState` and gives no character yet: `length` is 0, and the buffer begins with
  // the accent as it is printed on the key. The next key is combined with it, and sets the state back to 0. A key
  // without a character leaves buffer and state alone and answers a status that is not 0.
  virtual OSStatus translate(quint16 keyCode, quint16 action, quint32 modifierKeyState, quint32 keyboardType,
                             quint32 options, quint32& deadKeyState, std::span<char16_t> buffer,
                             qsizetype& length) const = 0;
};

// Knows the layout that the user's keyboard has now. Main thread only.
class KeyboardLayouts {
 public:
  virtual ~KeyboardLayouts() = default;

  // Never null; the same object until the user changes the layout.
  [[nodiscard]] virtual std::shared_ptr<const KeyboardLayout> currentKeyboardLayout() = 0;
  // The type of the keyboard that was used last.
  [[nodiscard]] virtual quint8 keyboardType() const = 0;
};

}  // namespace quillo
