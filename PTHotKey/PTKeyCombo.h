#pragma once

#include "foundation/PropertyListValue.h"

#include <QString>
#include <QtGlobal>

#include <memory>
#include <optional>

namespace quillo {

class PTKeyCodeTranslator;

// A key and the modifiers that are pressed with it: a virtual key code and modifier bits in the encoding of hot keys
// (command 0x100, option 0x800, control 0x1000, shift 0x200). Never changes. Its two numbers are kept as they come:
// nothing is checked or normalised, and only the four bits are ever interpreted.
//
// Objects are shared, and a copy is the same object. Main thread only.
class PTKeyCombo final : public std::enable_shared_from_this<PTKeyCombo> {
  struct Private {
    explicit Private() = default;
  };

 public:
  using Pointer = std::shared_ptr<const PTKeyCombo>;

  static constexpr qint64 noKey = -1;
  static constexpr quint64 noModifiersRecorded = ~quint64{0};

  // The combination of an empty shortcut: no key, no modifiers recorded.
  [[nodiscard]] static Pointer clearKeyCombo();
  [[nodiscard]] static Pointer keyComboWithKeyCode(qint64 keyCode, quint64 modifiers);
  // From "keyCode" and "modifiers", each read as a signed 32-bit integer. Nothing and an empty dictionary give the
  // clear combination, a missing number is 0. A key code below -1 becomes -1; modifiers of 0 or less become all ones,
  // so 0 (no modifiers) does not survive being stored; the main application reads the shared key so.
  [[nodiscard]] static Pointer keyComboWithPlistRepresentation(
      const std::optional<PropertyListDictionary>& representation);

  PTKeyCombo(Private, qint64 keyCode, quint64 modifiers) : m_keyCode(keyCode), m_modifiers(modifiers) {}

  // "keyCode" and "modifiers" as signed integers: the clear combination is -1 and -1.
  [[nodiscard]] PropertyListDictionary plistRepresentation() const;
  [[nodiscard]] Pointer copy() const { return shared_from_this(); }

  // With anything that has a key code and modifiers. There is no hash to go with it: combinations are no keys of
  // dictionaries.
  template <typename Other>
  [[nodiscard]] bool isEqual(const Other& other) const {
    return m_keyCode == other.keyCode() && m_modifiers == other.modifiers();
  }

  [[nodiscard]] qint64 keyCode() const { return m_keyCode; }
  [[nodiscard]] quint64 modifiers() const { return m_modifiers; }

  // A key with at least one modifier: a bare key cannot be a hot key.
  [[nodiscard]] bool isValidHotKeyCombo() const { return m_keyCode >= 0 && m_modifiers != 0; }
  [[nodiscard]] bool isClearCombo() const { return m_keyCode == noKey && m_modifiers == noModifiersRecorded; }

  // The key's name as the user's keyboard prints it; empty for the clear combination.
  [[nodiscard]] QString keyCodeString() const;
  // The modifiers as bits of the application framework; 0 for the clear combination.
  [[nodiscard]] quint64 modifierMask() const;
  // Modifier glyphs and the key's name, "⌘⇧J"; the localised "(None)" for what cannot be a hot key.
  [[nodiscard]] QString description() const;

  // One glyph for each modifier, always in the order command, option, control, shift.
  [[nodiscard]] static QString stringForModifiers(quint64 modifiers);
  // The program's names of keys that no layout names (see KeyCodeNames); kept once they are read.
  [[nodiscard]] static PropertyListDictionary keyCodesDictionary();
  // By the older or the newer layout of the resource, which tells its version.
  [[nodiscard]] static QString stringForKeyCode(qint16 keyCode);
  [[nodiscard]] static QString stringForKeyCode(qint16 keyCode, const PropertyListDictionary& keyCodeMap);
  // The older: the resource is the map itself. A key that is not in it reads as its code in hexadecimal.
  [[nodiscard]] static QString stringForKeyCodeLegacy(qint16 keyCode, const PropertyListDictionary& keyCodeMap);
  // The newer: the resource names the keys that the keyboard layout does not, and puts a word before those of the pad.
  [[nodiscard]] static QString stringForKeyCodeNew(qint16 keyCode, const PropertyListDictionary& keyCodeMap);
  // The same by a translator of the caller's own, in place of the current layout's.
  [[nodiscard]] static QString stringForKeyCodeNew(qint16 keyCode, const PropertyListDictionary& keyCodeMap,
                                                   PTKeyCodeTranslator& translator);

 private:
  qint64 m_keyCode;
  quint64 m_modifiers;
};

}  // namespace quillo
