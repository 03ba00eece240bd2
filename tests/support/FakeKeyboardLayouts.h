#pragma once

#include "platform/KeyboardLayout.h"

#include <map>
#include <memory>
#include <string>

namespace quillo {

// A layout of a few keys. The accent key is dead: it gives nothing itself, and a letter after it gets a circumflex.
struct FakeLayout : KeyboardLayout {
  explicit FakeLayout(std::map<quint16, std::u16string> characters) : keys(std::move(characters)) {}

  static constexpr quint16 accentKey = 50;

  QString localizedName() const override { return QStringLiteral("Fake"); }
  OSStatus translate(quint16 keyCode, quint16 action, quint32 modifierKeyState, quint32, quint32 options,
                     quint32& deadKeyState, std::span<char16_t> buffer, qsizetype& length) const override {
    ++calls;
    length = 0;
    if (action != displayAction || modifierKeyState != 0 || options != 0 || buffer.size() != 4) return -50;
    if (keyCode == accentKey) {
      buffer[0] = u'^';
      deadKeyState = 1;
      return 0;
    }
    const auto key = keys.find(keyCode);
    if (key == keys.end()) return -1;
    for (const char16_t unit : key->second) buffer[static_cast<size_t>(length++)] = unit;
    if (deadKeyState == 1 && buffer[0] == u'e') buffer[0] = u'ê';
    deadKeyState = 0;
    return 0;
  }

  std::map<quint16, std::u16string> keys;
  mutable int calls{0};
};

struct FakeKeyboardLayouts : KeyboardLayouts {
  std::shared_ptr<const KeyboardLayout> currentKeyboardLayout() override { return current; }
  quint8 keyboardType() const override { return 40; }

  std::shared_ptr<FakeLayout> current{std::make_shared<FakeLayout>(
      std::map<quint16, std::u16string>{{38, u"j"}, {40, u"k"}, {14, u"e"}, {89, u"7"}, {6, u"xyz"}})};
};

}  // namespace quillo
