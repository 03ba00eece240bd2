#pragma once

#include <QtGlobal>

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace quillo {

// Which of an X server's eight modifier bits do what. Shift, Caps Lock and Control are always the first three; the
// others are as the keyboard map has them.
struct X11Modifiers {
  quint16 option{0x08};
  quint16 command{0x40};
  quint16 numLock{0};
  quint16 scrollLock{0};

  bool operator==(const X11Modifiers&) const = default;
};

// From the server's modifier mapping: for each of the eight modifiers in turn, as many keycodes as fit, 0 for none.
// What the mapping does not tell stays as it usually is.
[[nodiscard]] X11Modifiers x11ModifiersOfMapping(std::span<const quint8> keycodes,
                                                 const std::function<bool(quint8 keycode, quint32 keysym)>& hasKeysym);

// The bits of a combination's modifiers (platform/HotKeys.h; others are ignored). Nothing when none of them can be
// told from the rest: a combination must not turn into a bare key.
[[nodiscard]] std::optional<quint16> x11Mask(quint32 modifiers, const X11Modifiers& map);

// Every combination of the locks (Caps, Num, Scroll) that can be on while a key is pressed, none of them first.
[[nodiscard]] std::vector<quint16> lockVariants(const X11Modifiers& map);

// An event's state without locks, mouse buttons and layout.
[[nodiscard]] quint16 withoutLocks(quint16 state, const X11Modifiers& map);

}  // namespace quillo
