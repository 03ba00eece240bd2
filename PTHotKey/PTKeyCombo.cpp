#include "PTHotKey/PTKeyCombo.h"

#include "PTHotKey/KeyCodeNames.h"
#include "PTHotKey/PTKeyCodeTranslator.h"
#include "foundation/Bundle.h"
#include "platform/HotKeys.h"

#include <algorithm>
#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct Modifier {
  quint64 bit;
  char16_t glyph;
  quint64 frameworkBit;
};

// In the order of the text. It differs from the usual order of menus, and is the one that the main application shows.
constexpr std::array modifierTable{
    Modifier{HotKeyModifier::command, u'\u2318', 0x100000},
    Modifier{HotKeyModifier::option, u'\u2325', 0x80000},
    Modifier{HotKeyModifier::control, u'\u2303', 0x40000},
    Modifier{HotKeyModifier::shift, u'\u21E7', 0x20000},
};

}  // namespace

PTKeyCombo::Pointer PTKeyCombo::clearKeyCombo() {
  return keyComboWithKeyCode(noKey, noModifiersRecorded);
}

PTKeyCombo::Pointer PTKeyCombo::keyComboWithKeyCode(qint64 keyCode, quint64 modifiers) {
  return std::make_shared<const PTKeyCombo>(Private(), keyCode, modifiers);
}

PTKeyCombo::Pointer PTKeyCombo::keyComboWithPlistRepresentation(
    const std::optional<PropertyListDictionary>& representation) {
  if (!representation || representation->isEmpty()) return clearKeyCombo();
  const qint32 keyCode = representation->value(u"keyCode"_s, 0).intValue();
  const qint32 modifiers = representation->value(u"modifiers"_s, 0).intValue();
  return keyComboWithKeyCode(std::max(keyCode, -1),
                             modifiers <= 0 ? noModifiersRecorded : static_cast<quint64>(modifiers));
}

PropertyListDictionary PTKeyCombo::plistRepresentation() const {
  return {{u"keyCode"_s, m_keyCode}, {u"modifiers"_s, static_cast<qint64>(m_modifiers)}};
}

QString PTKeyCombo::keyCodeString() const {
  return isClearCombo() ? QString() : stringForKeyCode(static_cast<qint16>(m_keyCode));
}

quint64 PTKeyCombo::modifierMask() const {
  if (isClearCombo()) return 0;
  quint64 mask = 0;
  for (const Modifier& modifier : modifierTable)
    if (m_modifiers & modifier.bit) mask |= modifier.frameworkBit;
  return mask;
}

QString PTKeyCombo::description() const {
  if (!isValidHotKeyCombo()) return Bundle::mainBundle().localizedStringForKey(u"(None)"_s, u""_s);
  return stringForModifiers(m_modifiers) + stringForKeyCode(static_cast<qint16>(m_keyCode));
}

QString PTKeyCombo::stringForModifiers(quint64 modifiers) {
  QString text;
  for (const Modifier& modifier : modifierTable)
    if (modifiers & modifier.bit) text += QChar(modifier.glyph);
  return text;
}

PropertyListDictionary PTKeyCombo::keyCodesDictionary() {
  static KeyCodeNames names(Bundle(u":/quillo"_s, {}));
  return names.dictionary();
}

QString PTKeyCombo::stringForKeyCode(qint16 keyCode) {
  return stringForKeyCode(keyCode, keyCodesDictionary());
}

QString PTKeyCombo::stringForKeyCode(qint16 keyCode, const PropertyListDictionary& keyCodeMap) {
  return keyCodeMap.value(u"version"_s, 0).integerValue() < 1 ? stringForKeyCodeLegacy(keyCode, keyCodeMap)
                                                              : stringForKeyCodeNew(keyCode, keyCodeMap);
}

QString PTKeyCombo::stringForKeyCodeLegacy(qint16 keyCode, const PropertyListDictionary& keyCodeMap) {
  const auto name = keyCodeMap.find(QString::number(keyCode));
  if (name != keyCodeMap.end() && name->isString()) return name->string();
  // Of 32 bits, as a negative code shows.
  return QString::number(static_cast<quint32>(qint32{keyCode}), 16).toUpper();
}

static std::optional<QString> unmappedName(const QString& code, const PropertyListDictionary& keyCodeMap) {
  const auto name = keyCodeMap.value(u"unmappedKeys"_s).dictionary().value(code);
  return name.isString() ? std::optional(name.string()) : std::nullopt;
}

QString PTKeyCombo::stringForKeyCodeNew(qint16 keyCode, const PropertyListDictionary& keyCodeMap) {
  // The layout is not asked for a key that it does not name.
  if (const auto name = unmappedName(QString::number(keyCode), keyCodeMap)) return *name;
  return stringForKeyCodeNew(keyCode, keyCodeMap, *PTKeyCodeTranslator::currentTranslator());
}

QString PTKeyCombo::stringForKeyCodeNew(qint16 keyCode, const PropertyListDictionary& keyCodeMap,
                                        PTKeyCodeTranslator& translator) {
  const QString code = QString::number(keyCode);
  if (const auto name = unmappedName(code, keyCodeMap)) return *name;
  const QString character = translator.translateKeyCode(keyCode).toUpper();
  if (!keyCodeMap.value(u"padKeys"_s).array().contains(PropertyListValue(code))) return character;
  return keyCodeMap.value(u"padKeyString"_s).string() + u' ' + character;
}

}  // namespace quillo
