#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

namespace quillo {

// An accent key that waits for the letter it goes on.
struct DeadKey {
  char16_t combining;  // the accent that composes with a letter before it
  char16_t spacing;    // the accent alone, as it is printed on the key
};

// Nothing for a symbol that is no dead key, and for the few that stand for no accent.
[[nodiscard]] std::optional<DeadKey> deadKeyOfKeysym(quint32 keysym);

// What a dead key and the character after it enter: the letter with its accent; the accent alone before a space or
// itself; else the accent and then the character. `combining` need not be one of a dead key.
[[nodiscard]] QString composedCharacters(char16_t combining, char32_t character);

}  // namespace quillo
