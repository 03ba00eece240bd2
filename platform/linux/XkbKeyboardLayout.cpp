#include "platform/linux/XkbKeyboardLayout.h"

#include "platform/linux/DeadKeys.h"
#include "platform/linux/VirtualKeyCodes.h"

#include <QCryptographicHash>

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <cstdlib>

namespace quillo {

namespace {

constexpr OSStatus noCharacter = -1;
// In the options: dead keys give their accent at once.
constexpr quint32 noDeadKeys = 1;

QByteArray fingerprintOf(xkb_keymap* keymap, quint32 index) {
  char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
  const QByteArray whole = QByteArray::number(index) + ' ' + QByteArray(text);
  std::free(text);
  return QCryptographicHash::hash(whole, QCryptographicHash::Sha256);
}

OSStatus put(QStringView text, std::span<char16_t> buffer, qsizetype& length) {
  length = std::min(text.size(), static_cast<qsizetype>(buffer.size()));
  std::copy_n(text.utf16(), length, buffer.begin());
  return HotKeyStatus::done;
}

}  // namespace

void XkbKeyboardLayout::FreeKeymap::operator()(xkb_keymap* keymap) const {
  xkb_keymap_unref(keymap);
}

XkbKeyboardLayout::XkbKeyboardLayout(Keymap keymap, quint32 index)
    : m_keymap(std::move(keymap)), m_index(index), m_fingerprint(fingerprintOf(m_keymap.get(), index)) {}

QString XkbKeyboardLayout::localizedName() const {
  return QString::fromUtf8(xkb_keymap_layout_get_name(m_keymap.get(), m_index));
}

quint32 XkbKeyboardLayout::keysym(quint16 keyCode) const {
  const auto evdev = evdevCodeOfVirtualKey(keyCode);
  if (!evdev) return XKB_KEY_NoSymbol;
  const xkb_keycode_t key = *evdev + keycodeOffset;
  const auto atLevel = [&](xkb_level_index_t level) {
    const xkb_keysym_t* symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, m_index, level, &symbols);
    return count > 0 ? symbols[0] : xkb_keysym_t{XKB_KEY_NoSymbol};
  };
  const xkb_keysym_t plain = atLevel(0);
  // The keys of the pad have the directions on their first level, and what is printed large on the second.
  const bool isDirection = plain >= XKB_KEY_KP_Home && plain <= XKB_KEY_KP_Delete;
  return isDirection ? atLevel(1) : plain;
}

OSStatus XkbKeyboardLayout::translate(quint16 keyCode, quint16, quint32, quint32, quint32 options,
                                      quint32& deadKeyState, std::span<char16_t> buffer, qsizetype& length) const {
  length = 0;
  const quint32 symbol = keysym(keyCode);
  if (const auto dead = deadKeyOfKeysym(symbol); dead && (options & noDeadKeys || deadKeyState == 0)) {
    put(QString(QChar(dead->spacing)), buffer, length);
    if (options & noDeadKeys) return HotKeyStatus::done;
    deadKeyState = dead->combining;
    length = 0;
    return HotKeyStatus::done;
  }
  const auto dead = deadKeyOfKeysym(symbol);
  const char32_t character = dead ? dead->spacing : xkb_keysym_to_utf32(symbol);
  // Control characters, such as that of Return, are printed on no key.
  if (character < 0x20 || character == 0x7f) return noCharacter;
  if (deadKeyState == 0) return put(QString::fromUcs4(&character, 1), buffer, length);
  const QString composed = composedCharacters(static_cast<char16_t>(deadKeyState), character);
  deadKeyState = 0;
  return put(composed, buffer, length);
}

}  // namespace quillo
