#pragma once

#include "PTHotKey/PTKeyCombo.h"
#include "foundation/PropertyListValue.h"

#include <QString>

#include <optional>

namespace quillo {

// The combination that a text such as "cmd+shift+J", "⌘⇧J" or "super+f13" means. Keys are named as the user's keyboard
// prints them, as the resource of key names has them, or by a common word ("return"). Null, with the reason in one
// sentence, for anything else, and for a key without a modifier.
[[nodiscard]] PTKeyCombo::Pointer keyComboFromText(const QString& text, QString* reason);

// The same in words that keyComboFromText reads, "Super+Shift+J"; "(None)" for what cannot be a hot key.
[[nodiscard]] QString wordsForKeyCombo(const PTKeyCombo& combo);
// The front of it, "Super+Shift+".
[[nodiscard]] QString wordsForModifiers(quint64 modifiers);

// What could no longer be typed while the combination is a hot key.
enum class LossForTyping { None, KeyAlone, ShiftedKey };
[[nodiscard]] LossForTyping lossForTyping(const PTKeyCombo& combo);

// The combination that the setting MenuEntryGlobalShortcut means to the agent, the clear one where there is none; and
// the setting that means the combination.
[[nodiscard]] PTKeyCombo::Pointer storedShortcut(const std::optional<PropertyListDictionary>& setting);
[[nodiscard]] PropertyListDictionary shortcutSetting(const PTKeyCombo& combo);

}  // namespace quillo
