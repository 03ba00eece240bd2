#pragma once

#include "platform/KeyboardLayout.h"

#include <QString>

#include <memory>

namespace quillo {

// Turns a virtual key code into the character that a keyboard layout prints on that key. Main thread only.
class PTKeyCodeTranslator {
 public:
  // The translator of the user's current layout. Exactly one is kept, and another takes its place at the first call
  // after the layout has changed. Never null.
  static std::shared_ptr<PTKeyCodeTranslator> currentTranslator();
  // Where the current layout is asked for; must outlive its use. Null, which is also the start, stands for a layout
  // whose keys have no characters. Drops the translator that is kept.
  static void setKeyboardLayouts(KeyboardLayouts* layouts);

  explicit PTKeyCodeTranslator(std::shared_ptr<const KeyboardLayout> layout);

  // One UTF-16 unit: the first that the layout gives, in its unshifted form. The state of a dead key stays from one
  // call to the next, so the key that follows a dead one is named with its accent, as the main application's
  // shortcut field shows it. A key without a
  // character is U+FFFD.
  [[nodiscard]] QString translateKeyCode(qint16 keyCode);

  [[nodiscard]] const std::shared_ptr<const KeyboardLayout>& keyboardLayout() const { return m_keyboardLayout; }
  [[nodiscard]] QString description() const;

 private:
  std::shared_ptr<const KeyboardLayout> m_keyboardLayout;
  // Reserved: nothing reads or writes it.
  [[maybe_unused]] quint32 m_keyTranslateState{0};
  quint32 m_deadKeyState{0};
};

}  // namespace quillo
