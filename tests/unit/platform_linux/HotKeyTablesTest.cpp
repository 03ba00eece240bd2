// The tables and rules behind hot keys and key names, without a display.

#include "platform/HotKeys.h"
#include "platform/linux/DeadKeys.h"
#include "platform/linux/PortalHotKeys.h"
#include "platform/linux/VirtualKeyCodes.h"
#include "platform/linux/X11Modifiers.h"
#include "platform/linux/XkbKeyboardLayout.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <set>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(VirtualKeyCodes, AreOneToOneAndComplete) {
  std::set<quint32> keyCodes, evdevCodes;
  for (const VirtualKey& key : virtualKeys) {
    keyCodes.insert(key.keyCode);
    evdevCodes.insert(key.evdev);
  }
  EXPECT_EQ(evdevCodes.size(), virtualKeys.size());
  std::set<quint32> all;
  for (quint32 code = 0; code <= 126; ++code) all.insert(code);
  for (const quint32 noKey : {52, 66, 68, 70, 77, 108, 112}) all.erase(noKey);
  EXPECT_EQ(keyCodes, all);
  // The block of letters and signs, read off a keyboard row by row.
  const std::pair<std::array<int, 10>, int> rows[] = {{{18, 19, 20, 21, 23, 22, 26, 28, 25, 29}, KEY_1},
                                                      {{12, 13, 14, 15, 17, 16, 32, 34, 31, 35}, KEY_Q},
                                                      {{0, 1, 2, 3, 5, 4, 38, 40, 37, 41}, KEY_A},
                                                      {{6, 7, 8, 9, 11, 45, 46, 43, 47, 44}, KEY_Z}};
  for (const auto& [codes, first] : rows)
    for (size_t i = 0; i < codes.size(); ++i)
      EXPECT_EQ(evdevCodeOfVirtualKey(static_cast<quint32>(codes[i])), first + static_cast<int>(i));
  for (const quint32 noKey : {52U, 127U, 0xFFFFFFFFU}) EXPECT_EQ(evdevCodeOfVirtualKey(noKey), std::nullopt);
}

TEST(X11Modifiers, AreFoundWhereverTheMapHasThem) {
  // The server's mapping, in which a modifier's keycode is its number.
  const std::map<quint8, quint32> symbols{
      {3, XKB_KEY_Super_L}, {4, XKB_KEY_Num_Lock}, {5, XKB_KEY_Scroll_Lock}, {6, XKB_KEY_Alt_R}};
  std::array<quint8, 16> keycodes{};
  for (const auto& [modifier, symbol] : symbols) keycodes[modifier * 2U + 1] = modifier;
  EXPECT_EQ(
      x11ModifiersOfMapping(keycodes, [&](quint8 keycode, quint32 symbol) { return symbols.at(keycode) == symbol; }),
      (X11Modifiers{.option = 0x40, .command = 0x08, .numLock = 0x10, .scrollLock = 0x20}));
  const auto always = [](quint8, quint32) { return true; };
  EXPECT_EQ(x11ModifiersOfMapping(std::array<quint8, 16>{}, always), X11Modifiers{});
  EXPECT_EQ(x11ModifiersOfMapping({}, always), X11Modifiers{});
}

TEST(X11Modifiers, NoCombinationTurnsIntoABareKey) {
  const X11Modifiers map{.option = 0x08, .command = 0x40, .numLock = 0x10, .scrollLock = 0};
  EXPECT_EQ(x11Mask(0x100, map), 0x40);
  EXPECT_EQ(x11Mask(0x1B00, map), 0x4D);
  EXPECT_EQ(x11Mask(0xFFFFFFFF, map), 0x4D);
  EXPECT_EQ(x11Mask(0x400, map), std::nullopt);
  EXPECT_EQ(x11Mask(0, map), std::nullopt);
  // Super shares its bit with Num Lock: nobody could tell them apart.
  EXPECT_EQ(x11Mask(0x100, X11Modifiers{.numLock = 0x40}), std::nullopt);
}

TEST(X11Modifiers, EveryStateOfTheLocksIsCovered) {
  const auto sorted = [](const X11Modifiers& map) {
    auto variants = lockVariants(map);
    std::sort(variants.begin(), variants.end());
    return variants;
  };
  EXPECT_EQ(sorted({}), (std::vector<quint16>{0, 2}));
  EXPECT_EQ(sorted({.numLock = 0x10}), (std::vector<quint16>{0, 2, 0x10, 0x12}));
  EXPECT_EQ(sorted({.numLock = 0x10, .scrollLock = 0x20}),
            (std::vector<quint16>{0, 2, 0x10, 0x12, 0x20, 0x22, 0x30, 0x32}));
  EXPECT_EQ(sorted({.numLock = 0x10, .scrollLock = 0x10}), (std::vector<quint16>{0, 2, 0x10, 0x12}));
  EXPECT_EQ(withoutLocks(0x2000 | 0x100 | 0x10 | 0x02 | 0x41, {.numLock = 0x10}), 0x41);
}

TEST(DeadKeys, ComposeOrStandAlone) {
  const auto acute = deadKeyOfKeysym(XKB_KEY_dead_acute);
  ASSERT_TRUE(acute);
  EXPECT_EQ(acute->spacing, u'´');
  EXPECT_FALSE(deadKeyOfKeysym(XKB_KEY_a));
  const std::pair<char32_t, QString> cases[] = {
      {U'e', u"é"_s}, {U' ', u"´"_s}, {U'´', u"´"_s}, {U'j', u"´j"_s}, {U'\U0001D538', u"´\U0001D538"_s}};
  for (const auto& [character, expected] : cases) EXPECT_EQ(composedCharacters(acute->combining, character), expected);
}

std::unique_ptr<XkbKeyboardLayout> layoutNamed(const char* name) {
  xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
  const xkb_rule_names names{
      .rules = "evdev", .model = "pc105", .layout = name, .variant = nullptr, .options = nullptr};
  XkbKeyboardLayout::Keymap keymap(xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
  xkb_context_unref(context);
  return keymap ? std::make_unique<XkbKeyboardLayout>(std::move(keymap), 0) : nullptr;
}

TEST(XkbKeyboardLayout, NamesKeysAsTheyArePrinted) {
  // One state for all, as a translator has: a dead key goes on to the next.
  const struct {
    const char* layout;
    std::vector<std::pair<quint16, QString>> keys;
  } cases[] = {
      {"us", {{6, u"z"_s}, {16, u"y"_s}, {0, u"a"_s}, {50, u"`"_s}, {89, u"7"_s}, {65, u"."_s}}},
      {"de",
       {{6, u"y"_s}, {16, u"z"_s}, {41, u"ö"_s}, {10, u"<"_s}, {65, u","_s}, {50, u"^"_s}, {14, u"ê"_s}, {14, u"e"_s}}},
      {"fr", {{0, u"q"_s}, {12, u"a"_s}, {6, u"w"_s}, {19, u"é"_s}, {33, u"^"_s}, {33, u"^"_s}, {14, u"e"_s}}},
      {"gr", {{0, u"α"_s}}},
      {"ru", {{38, u"о"_s}}},
  };
  for (const auto& c : cases) {
    const auto layout = layoutNamed(c.layout);
    ASSERT_TRUE(layout) << c.layout;
    quint32 state = 0;
    for (const auto& [keyCode, expected] : c.keys) {
      char16_t buffer[4] = {u'?'};
      qsizetype length = 0;
      EXPECT_EQ(layout->translate(keyCode, 3, 0, 0, 0, state, buffer, length), 0);
      EXPECT_EQ(QString(QChar(buffer[0])), expected) << c.layout << ' ' << keyCode;
    }
    EXPECT_EQ(state, 0U);
    char16_t buffer[4] = {u'?'};
    qsizetype length = 9;
    for (const quint16 noCharacter : {36, 53, 122, 52, 60000}) {
      EXPECT_NE(layout->translate(noCharacter, 3, 0, 0, 0, state, buffer, length), 0) << noCharacter;
      EXPECT_EQ(length, 0);
    }
    EXPECT_EQ(buffer[0], u'?');
  }
  EXPECT_EQ(layoutNamed("de")->fingerprint(), layoutNamed("de")->fingerprint());
  EXPECT_NE(layoutNamed("de")->fingerprint(), layoutNamed("fr")->fingerprint());
}

TEST(PortalHotKeys, SpellTheTriggerAsThePortalReadsIt) {
  EXPECT_EQ(PortalHotKeys::trigger(0x1B00, "j"), u"CTRL+ALT+SHIFT+LOGO+j"_s);
  EXPECT_EQ(PortalHotKeys::trigger(0x100, "F13"), u"LOGO+F13"_s);
  EXPECT_EQ(PortalHotKeys::trigger(0x100, ""), u""_s);
  EXPECT_EQ(PortalHotKeys::trigger(0x400, "j"), u""_s);
}

}  // namespace
}  // namespace quillo
