#include "platform/linux/X11Modifiers.h"

#include "platform/HotKeys.h"

#include <xcb/xproto.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace quillo {

namespace {

constexpr size_t modifierCount = 8;
constexpr quint16 allModifiers = 0xff;
constexpr quint16 fixed = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL;

}  // namespace

X11Modifiers x11ModifiersOfMapping(std::span<const quint8> keycodes,
                                   const std::function<bool(quint8, quint32)>& hasKeysym) {
  const size_t width = keycodes.size() / modifierCount;
  const auto find = [&](std::initializer_list<quint32> keysyms, quint16 otherwise) {
    for (size_t modifier = 0; modifier < modifierCount; ++modifier)
      for (const quint8 keycode : keycodes.subspan(modifier * width, width))
        for (const quint32 keysym : keysyms)
          if (keycode != 0 && hasKeysym(keycode, keysym)) return static_cast<quint16>(1U << modifier);
    return otherwise;
  };
  const X11Modifiers usual;
  return {.option = find({XKB_KEY_Alt_L, XKB_KEY_Alt_R}, usual.option),
          .command = find({XKB_KEY_Super_L, XKB_KEY_Super_R}, usual.command),
          .numLock = find({XKB_KEY_Num_Lock}, 0),
          .scrollLock = find({XKB_KEY_Scroll_Lock}, 0)};
}

std::optional<quint16> x11Mask(quint32 modifiers, const X11Modifiers& map) {
  quint16 mask = 0;
  if (modifiers & HotKeyModifier::command) mask |= map.command;
  if (modifiers & HotKeyModifier::option) mask |= map.option;
  if (modifiers & HotKeyModifier::control) mask |= XCB_MOD_MASK_CONTROL;
  if (modifiers & HotKeyModifier::shift) mask |= XCB_MOD_MASK_SHIFT;
  if (withoutLocks(mask, map) != mask || mask == 0) return std::nullopt;
  return mask;
}

std::vector<quint16> lockVariants(const X11Modifiers& map) {
  std::vector<quint16> variants{0};
  for (const quint16 lock : {quint16{XCB_MOD_MASK_LOCK}, map.numLock, map.scrollLock}) {
    // None, or the same as a lock before it: nothing new can be on.
    if (lock == 0 || (lock & fixed & ~XCB_MOD_MASK_LOCK) || (variants.back() & lock) == lock) continue;
    const size_t count = variants.size();
    for (size_t i = 0; i < count; ++i) variants.push_back(static_cast<quint16>(variants[i] | lock));
  }
  return variants;
}

quint16 withoutLocks(quint16 state, const X11Modifiers& map) {
  return static_cast<quint16>(state & allModifiers & ~lockVariants(map).back());
}

}  // namespace quillo
