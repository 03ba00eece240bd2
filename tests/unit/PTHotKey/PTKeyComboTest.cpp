#include "PTHotKey/KeyCodeNames.h"
#include "PTHotKey/PTKeyCodeTranslator.h"
#include "PTHotKey/PTKeyCombo.h"
#include "foundation/FileContents.h"
#include "tests/support/FakeKeyboardLayouts.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 allOnes = std::numeric_limits<quint64>::max();

class PTKeyComboTest : public testing::Test {
 protected:
  PTKeyComboTest() { PTKeyCodeTranslator::setKeyboardLayouts(&layouts); }
  ~PTKeyComboTest() override { PTKeyCodeTranslator::setKeyboardLayouts(nullptr); }
  FakeKeyboardLayouts layouts;
};

TEST_F(PTKeyComboTest, FacetsOfCombinations) {
  const struct {
    qint64 keyCode;
    quint64 modifiers;
    bool isValid, isClear;
    quint64 mask;
    QString keyName, text;
  } cases[] = {
      {-1, allOnes, false, true, 0, u""_s, u"(None)"_s},
      {40, 0x300, true, false, 0x120000, u"K"_s, u"⌘⇧K"_s},
      {49, 0x1800, true, false, 0xC0000, u"Space"_s, u"⌥⌃Space"_s},
      {38, 0x1B00, true, false, 0x1E0000, u"J"_s, u"⌘⌥⌃⇧J"_s},
      {38, allOnes, true, false, 0x1E0000, u"J"_s, u"⌘⌥⌃⇧J"_s},
      {89, 0x100, true, false, 0x100000, u"Pad 7"_s, u"⌘Pad 7"_s},
      {38, 0, false, false, 0, u"J"_s, u"(None)"_s},
      {-5, 0x100, false, false, 0x100000, u"\uFFFD"_s, u"(None)"_s},
      // Bits that mean nothing count as modifiers and are not shown.
      {38, 0x400, true, false, 0, u"J"_s, u"J"_s},
      // The name is that of the low 16 bits; the number itself stays.
      {65536 + 38, 0x100, true, false, 0x100000, u"J"_s, u"⌘J"_s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.keyCode << ' ' << c.modifiers);
    const auto combo = PTKeyCombo::keyComboWithKeyCode(c.keyCode, c.modifiers);
    EXPECT_EQ(combo->keyCode(), c.keyCode);
    EXPECT_EQ(combo->modifiers(), c.modifiers);
    EXPECT_EQ(combo->isValidHotKeyCombo(), c.isValid);
    EXPECT_EQ(combo->isClearCombo(), c.isClear);
    EXPECT_EQ(combo->modifierMask(), c.mask);
    EXPECT_EQ(combo->keyCodeString(), c.keyName);
    EXPECT_EQ(combo->description(), c.text);
    EXPECT_EQ(combo->copy(), combo);
    EXPECT_TRUE(combo->isEqual(*PTKeyCombo::keyComboWithKeyCode(c.keyCode, c.modifiers)));
    EXPECT_FALSE(combo->isEqual(*PTKeyCombo::keyComboWithKeyCode(c.keyCode + 1, c.modifiers)));
    EXPECT_FALSE(combo->isEqual(*PTKeyCombo::keyComboWithKeyCode(c.keyCode, c.modifiers ^ 1)));
  }
}

TEST_F(PTKeyComboTest, ReadsTheStoredForm) {
  const struct {
    PropertyListDictionary stored;
    qint64 keyCode;
    quint64 modifiers;
  } cases[] = {
      {{}, -1, allOnes},
      {{{u"keyCode"_s, 40}, {u"modifiers"_s, 0}}, 40, allOnes},
      {{{u"keyCode"_s, -5}, {u"modifiers"_s, 256}}, -1, 256},
      {{{u"modifiers"_s, 256}}, 0, 256},
      {{{u"other"_s, true}}, 0, allOnes},
      {{{u"keyCode"_s, u" 12abc"_s}, {u"modifiers"_s, u"256"_s}}, 12, 256},
      {{{u"keyCode"_s, qint64{1} << 32}, {u"modifiers"_s, (qint64{1} << 32) + 256}}, 0, 256},
      {{{u"keyCode"_s, 38.9}, {u"modifiers"_s, 1e300}}, 38, 0x7FFFFFFF},
      // Integers lose their upper half, texts of digits stop at the limits.
      {{{u"keyCode"_s, quint64{0xFFFFFFFF00000026}}, {u"modifiers"_s, qint64{0x180000000}}}, 38, allOnes},
      {{{u"keyCode"_s, u"99999999999.9"_s}, {u"modifiers"_s, u"\t\n 99999999999-1"_s}}, 0x7FFFFFFF, 0x7FFFFFFF},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(PropertyListValue(c.stored).description().toStdString());
    const auto combo = PTKeyCombo::keyComboWithPlistRepresentation(c.stored);
    EXPECT_EQ(combo->keyCode(), c.keyCode);
    EXPECT_EQ(combo->modifiers(), c.modifiers);
    EXPECT_TRUE(PTKeyCombo::keyComboWithPlistRepresentation(combo->plistRepresentation())->isEqual(*combo));
  }
  EXPECT_TRUE(PTKeyCombo::keyComboWithPlistRepresentation(std::nullopt)->isClearCombo());
  const auto written = PTKeyCombo::clearKeyCombo()->plistRepresentation();
  EXPECT_EQ(written, (PropertyListDictionary{{u"keyCode"_s, -1}, {u"modifiers"_s, -1}}));
}

TEST_F(PTKeyComboTest, NamesByTheOlderAndTheNewerMap) {
  const PropertyListDictionary legacy{{u"36"_s, u"Return"_s}, {u"40"_s, 5}};
  const std::pair<int, QString> legacyNames[] = {{36, u"Return"_s},   {122, u"7A"_s}, {10, u"A"_s},
                                                 {-1, u"FFFFFFFF"_s}, {0, u"0"_s},    {40, u"28"_s}};
  for (const auto& [keyCode, name] : legacyNames)
    EXPECT_EQ(PTKeyCombo::stringForKeyCodeLegacy(static_cast<qint16>(keyCode), legacy), name);

  const PropertyListDictionary map{
      {u"version"_s, 2},
      {u"unmappedKeys"_s, PropertyListDictionary{{u"36"_s, u"Ret"_s}, {u"89"_s, u"Seven"_s}}},
      {u"padKeys"_s, PropertyListArray{u"40"_s, u"89"_s, 38}},
      {u"padKeyString"_s, u"Block"_s}};
  EXPECT_EQ(PTKeyCombo::stringForKeyCodeNew(36, map), u"Ret"_s);
  EXPECT_EQ(PTKeyCombo::stringForKeyCodeNew(89, map), u"Seven"_s);
  EXPECT_EQ(layouts.current->calls, 0);
  EXPECT_EQ(PTKeyCombo::stringForKeyCodeNew(40, map), u"Block K"_s);
  // The list holds texts; a number in it is none of them.
  EXPECT_EQ(PTKeyCombo::stringForKeyCodeNew(38, map), u"J"_s);
}

TEST_F(PTKeyComboTest, AResourceThatCannotBeReadIsTriedAgain) {
  const TestHome home;
  KeyCodeNames names({home.path(), {}});
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122, names.dictionary()), u"7A"_s);
  // What was read once is kept from then on.
  for (const auto& [bytes, name] : {std::pair<const char*, QString>{"( not, a, dictionary )", u"7A"_s},
                                    {"{ 122 = \"\xff\xfe\"; }", u"7A"_s},
                                    {"{ 122 = One; }", u"One"_s},
                                    {"{ 122 = Two; }", u"One"_s}}) {
    ASSERT_TRUE(writeFileInPlace(home.path(u"PTKeyCodes.plist"_s), bytes));
    EXPECT_EQ(PTKeyCombo::stringForKeyCode(122, names.dictionary()), name) << bytes;
  }
}

TEST_F(PTKeyComboTest, TranslatorsFollowTheLayout) {
  const auto first = PTKeyCodeTranslator::currentTranslator();
  EXPECT_EQ(PTKeyCodeTranslator::currentTranslator(), first);
  EXPECT_EQ(first->description(), u"PTKeyCodeTranslator layout=Fake (uchr)"_s);
  layouts.current = std::make_shared<FakeLayout>(std::map<quint16, std::u16string>{{38, u"ö"}});
  const auto second = PTKeyCodeTranslator::currentTranslator();
  EXPECT_NE(second, first);
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(38), u"Ö"_s);
  EXPECT_EQ(first->translateKeyCode(38), u"j"_s);
}

TEST_F(PTKeyComboTest, ATranslationIsOneUnitAndKeepsTheDeadKey) {
  PTKeyCodeTranslator translator(layouts.current), other(layouts.current);
  EXPECT_EQ(translator.translateKeyCode(6), u"x"_s);
  EXPECT_EQ(translator.translateKeyCode(99), u"\uFFFD"_s);
  EXPECT_EQ(translator.translateKeyCode(FakeLayout::accentKey), u"^"_s);
  EXPECT_EQ(translator.translateKeyCode(14), u"ê"_s);
  EXPECT_EQ(translator.translateKeyCode(14), u"e"_s);
  // Each translator has a state of its own.
  EXPECT_EQ(translator.translateKeyCode(FakeLayout::accentKey), u"^"_s);
  EXPECT_EQ(other.translateKeyCode(14), u"e"_s);
}

}  // namespace
}  // namespace quillo
