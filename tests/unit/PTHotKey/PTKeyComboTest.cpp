#include "PTHotKey/PTKeyCodeTranslator.h"
#include "PTHotKey/PTKeyCombo.h"
#include "tests/support/FakeKeyboardLayouts.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 allOnes = std::numeric_limits<quint64>::max();

class PTKeyComboTest : public testing::Test {
 protected:
  PTKeyComboTest() { PTKeyCodeTranslator::setKeyboardLayouts(&layouts); }
  ~PTKeyComboTest() override {
    PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
    PTKeyCombo::resetResourceBundle();
  }
  FakeKeyboardLayouts layouts;
};

TEST_F(PTKeyComboTest, FacetsOfCombinations) {
  const struct {
    qint64 keyCode;
    quint64 modifiers;
    bool isValid;
    bool isClear;
    quint64 mask;
    QString keyName;
    QString text;
  } cases[] = {
      {-1, allOnes, false, true, 0, u""_s, u"(None)"_s},
      {40, 0x300, true, false, 0x120000, u"K"_s, u"⌘⇧K"_s},
      {49, 0x1800, true, false, 0xC0000, u"Space"_s, u"⌥⌃Space"_s},
      {38, 0x1B00, true, false, 0x1E0000, u"J"_s, u"⌘⌥⌃⇧J"_s},
      {38, allOnes, true, false, 0x1E0000, u"J"_s, u"⌘⌥⌃⇧J"_s},
      {89, 0x100, true, false, 0x100000, u"Pad 7"_s, u"⌘Pad 7"_s},
      {36, 0x100, true, false, 0x100000, u"↩"_s, u"⌘↩"_s},
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
      {{{u"keyCode"_s, 38}}, 38, allOnes},
      {{{u"other"_s, true}}, 0, allOnes},
      {{{u"keyCode"_s, u" 12abc"_s}, {u"modifiers"_s, u"256"_s}}, 12, 256},
      {{{u"keyCode"_s, qint64{1} << 32}, {u"modifiers"_s, (qint64{1} << 32) + 256}}, 0, 256},
      {{{u"keyCode"_s, 38.9}, {u"modifiers"_s, 1e300}}, 38, 0x7FFFFFFF},
      {{{u"keyCode"_s, PropertyListArray{}}, {u"modifiers"_s, PropertyListDictionary{}}}, 0, allOnes},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(PropertyListValue(c.stored).description().toStdString());
    const auto combo = PTKeyCombo::keyComboWithPlistRepresentation(c.stored);
    EXPECT_EQ(combo->keyCode(), c.keyCode);
    EXPECT_EQ(combo->modifiers(), c.modifiers);
  }
  EXPECT_TRUE(PTKeyCombo::keyComboWithPlistRepresentation(std::nullopt)->isClearCombo());
  const auto written = PTKeyCombo::clearKeyCombo()->plistRepresentation();
  EXPECT_EQ(written, (PropertyListDictionary{{u"keyCode"_s, -1}, {u"modifiers"_s, -1}}));
}

// A stored number in one of its forms, with the 32-bit integer that it has to be read as, found without the code under
// test: integers lose their upper half, texts of digits stop at the limits.
struct Stored {
  std::optional<PropertyListValue> value;
  qint64 expected{0};
};

class StoredNumbers {
 public:
  Stored next() {
    static constexpr qint64 edges[] = {0, 1, -1, -2, 2, 127, 128, 255, 256, 4096, 65535, 65536};
    switch (pick(6)) {
      case 0:
        return {std::nullopt, 0};
      case 1: {
        const qint64 edge = edges[pick(std::size(edges))];
        return {PropertyListValue(edge), edge};
      }
      case 2: {
        // Built from its halves, so the answer is known: the lower one.
        const auto low = static_cast<qint32>(static_cast<quint32>(m_random()));
        const quint64 whole = (m_random() << 32) | static_cast<quint32>(low);
        return {PropertyListValue(whole), low};
      }
      case 3: {
        const auto low = static_cast<qint32>(static_cast<quint32>(m_random()));
        return {PropertyListValue(qint64{low}), low};
      }
      default:
        return text();
    }
  }

 private:
  size_t pick(size_t count) { return static_cast<size_t>(m_random() % count); }

  Stored text() {
    static const QString before[] = {u""_s, u" "_s, u"\t\n "_s};
    static const QString after[] = {u""_s, u" "_s, u"abc"_s, u".9"_s, u"-1"_s};
    const bool isNegative = pick(3) == 0;
    std::string digits;
    for (size_t i = 0; i < pick(13); ++i) digits += static_cast<char>('0' + pick(10));
    qint64 number = 0;  // of twelve digits at most
    for (const char digit : digits) number = number * 10 + (digit - '0');
    if (isNegative) number = -number;
    const qint64 expected = std::clamp<qint64>(number, -2147483648LL, 2147483647LL);
    const QString sign = isNegative ? u"-"_s : u""_s;
    QString tail = after[pick(std::size(after))];
    // "-" and then "-1" is no number, which is what the expectation says; "" and then "-1" would be one.
    if (digits.empty() && tail == u"-1") tail = u"x"_s;
    return {PropertyListValue(before[pick(std::size(before))] + sign + QString::fromStdString(digits) + tail),
            expected};
  }

  std::mt19937_64 m_random{20140310};
};

TEST_F(PTKeyComboTest, ReadsAnyStoredNumbersAndWritesThemBack) {
  StoredNumbers numbers;
  for (int i = 0; i < 100'000; ++i) {
    const Stored keyCode = numbers.next();
    const Stored modifiers = numbers.next();
    PropertyListDictionary stored;
    if (keyCode.value) stored.insert(u"keyCode"_s, *keyCode.value);
    if (modifiers.value) stored.insert(u"modifiers"_s, *modifiers.value);
    const qint64 wantedKey = stored.isEmpty() ? -1 : keyCode.expected < -1 ? -1 : keyCode.expected;
    const quint64 wantedModifiers =
        stored.isEmpty() || modifiers.expected <= 0 ? allOnes : static_cast<quint64>(modifiers.expected);

    const auto combo = PTKeyCombo::keyComboWithPlistRepresentation(stored);
    ASSERT_EQ(combo->keyCode(), wantedKey) << PropertyListValue(stored).description().toStdString();
    ASSERT_EQ(combo->modifiers(), wantedModifiers) << PropertyListValue(stored).description().toStdString();
    // What is written is read as the same.
    const auto again = PTKeyCombo::keyComboWithPlistRepresentation(combo->plistRepresentation());
    ASSERT_TRUE(again->isEqual(*combo));
  }
}

TEST_F(PTKeyComboTest, ModifierTextHasOneOrderForAllSets) {
  const std::pair<quint64, QString> order[] = {{0x100, u"⌘"_s}, {0x800, u"⌥"_s}, {0x1000, u"⌃"_s}, {0x200, u"⇧"_s}};
  for (unsigned set = 0; set < 16; ++set) {
    quint64 bits = 0x10000;  // one that means nothing
    QString expected;
    for (unsigned row = 0; row < 4; ++row)
      if (set >> row & 1) {
        bits |= order[row].first;
        expected += order[row].second;
      }
    EXPECT_EQ(PTKeyCombo::stringForModifiers(bits), expected);
  }
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

TEST_F(PTKeyComboTest, TheResourceNamesWhatALayoutDoesNot) {
  const auto map = PTKeyCombo::keyCodesDictionary();
  ASSERT_GE(map[u"version"_s].integerValue(), 1);
  EXPECT_EQ(map[u"padKeyString"_s].string(), u"Pad"_s);
  const auto names = map[u"unmappedKeys"_s].dictionary();
  const std::pair<int, QString> known[] = {{36, u"↩"_s},   {48, u"⇥"_s},  {49, u"Space"_s}, {51, u"⌫"_s},
                                           {53, u"⎋"_s},   {117, u"⌦"_s}, {122, u"F1"_s},   {111, u"F12"_s},
                                           {90, u"F20"_s}, {123, u"←"_s}, {126, u"↑"_s},    {76, u"⌅"_s}};
  for (const auto& [code, name] : known) EXPECT_EQ(names[QString::number(code)].string(), name);
  QStringList seen;
  for (const auto& name : names) seen << name.string();
  EXPECT_EQ(QStringList(seen).removeDuplicates(), 0);
  for (const auto& code : map[u"padKeys"_s].array()) {
    EXPECT_TRUE(code.isString());
    EXPECT_FALSE(names.contains(code.string())) << code.string().toStdString();
  }
}

TEST_F(PTKeyComboTest, AResourceThatCannotBeReadIsTriedAgain) {
  const TestHome home;
  const auto write = [&](const QByteArray& bytes) {
    QFile file(home.path(u"PTKeyCodes.plist"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(bytes);
  };
  PTKeyCombo::setResourceBundle({home.path(), {}});
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122), u"7A"_s);
  write("( not, a, dictionary )");
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122), u"7A"_s);
  write("{ 122 = \"\xff\xfe\"; }");
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122), u"7A"_s);
  write("{ 122 = One; }");
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122), u"One"_s);
  // Kept from then on.
  write("{ 122 = Two; }");
  EXPECT_EQ(PTKeyCombo::stringForKeyCode(122), u"One"_s);
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
  PTKeyCodeTranslator translator(layouts.current);
  EXPECT_EQ(translator.translateKeyCode(6), u"x"_s);
  EXPECT_EQ(translator.translateKeyCode(99), u"\uFFFD"_s);
  EXPECT_EQ(translator.translateKeyCode(FakeLayout::accentKey), u"^"_s);
  EXPECT_EQ(translator.translateKeyCode(14), u"ê"_s);
  EXPECT_EQ(translator.translateKeyCode(14), u"e"_s);
  // Each translator has a state of its own.
  PTKeyCodeTranslator other(layouts.current);
  EXPECT_EQ(translator.translateKeyCode(FakeLayout::accentKey), u"^"_s);
  EXPECT_EQ(other.translateKeyCode(14), u"e"_s);
}

}  // namespace
}  // namespace quillo
