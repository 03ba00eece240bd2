#pragma once

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "tests/support/FakeKeyboardLayouts.h"

namespace quillo {

// Gives the program a layout of the printable characters of ASCII, in the order of the key codes, and one dead key.
inline void plugInSmallKeyboard() {
  static FakeKeyboardLayouts layouts = [] {
    FakeKeyboardLayouts made;
    made.current->keys.clear();
    for (char16_t character = u'!'; character < 0x7F; ++character)
      made.current->keys[static_cast<quint16>(character - u'!')] = std::u16string(1, character);
    return made;
  }();
  PTKeyCodeTranslator::setKeyboardLayouts(&layouts);
}

}  // namespace quillo
