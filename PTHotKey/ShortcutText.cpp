#include "PTHotKey/ShortcutText.h"

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "platform/HotKeys.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Virtual key codes are smaller than this.
constexpr qint16 keyCodeLimit = 128;
// The modifiers' own keys.
constexpr qint16 firstModifierKey = 54;
constexpr qint16 lastModifierKey = 63;

struct Word {
  QLatin1StringView word;
  quint32 meaning;
};

constexpr std::array modifierWords{
    Word{"cmd"_L1, HotKeyModifier::command},     Word{"command"_L1, HotKeyModifier::command},
    Word{"super"_L1, HotKeyModifier::command},   Word{"meta"_L1, HotKeyModifier::command},
    Word{"win"_L1, HotKeyModifier::command},     Word{"logo"_L1, HotKeyModifier::command},
    Word{"opt"_L1, HotKeyModifier::option},      Word{"option"_L1, HotKeyModifier::option},
    Word{"alt"_L1, HotKeyModifier::option},      Word{"ctrl"_L1, HotKeyModifier::control},
    Word{"control"_L1, HotKeyModifier::control}, Word{"shift"_L1, HotKeyModifier::shift},
};

// Words for keys whose name is a sign or has a blank, by virtual key code.
constexpr std::array keyWords{
    Word{"return"_L1, 36},    Word{"enter"_L1, 36},      Word{"tab"_L1, 48},       Word{"backspace"_L1, 51},
    Word{"escape"_L1, 53},    Word{"esc"_L1, 53},        Word{"numlock"_L1, 71},   Word{"clear"_L1, 71},
    Word{"volumeup"_L1, 72},  Word{"volumedown"_L1, 73}, Word{"help"_L1, 114},     Word{"ins"_L1, 114},
    Word{"pageup"_L1, 116},   Word{"pgup"_L1, 116},      Word{"delete"_L1, 117},   Word{"del"_L1, 117},
    Word{"pagedown"_L1, 121}, Word{"pgdn"_L1, 121},      Word{"left"_L1, 123},     Word{"right"_L1, 124},
    Word{"down"_L1, 125},     Word{"up"_L1, 126},        Word{"pad enter"_L1, 76},
};

template <size_t count>
std::optional<quint32> lookUp(const std::array<Word, count>& words, QStringView text) {
  for (const Word& word : words)
    if (text.compare(word.word, Qt::CaseInsensitive) == 0) return word.meaning;
  return std::nullopt;
}

std::optional<quint32> modifierOfGlyph(QChar glyph) {
  for (const quint32 modifier :
       {HotKeyModifier::command, HotKeyModifier::option, HotKeyModifier::control, HotKeyModifier::shift})
    if (PTKeyCombo::stringForModifiers(modifier) == glyph) return modifier;
  return std::nullopt;
}

struct Parts {
  quint32 modifiers{0};
  QString key;
};

// Takes modifiers from the front for as long as there are any; each turn makes the rest shorter.
Parts split(const QString& text) {
  Parts parts;
  QStringView rest = QStringView(text).trimmed();
  while (!rest.isEmpty()) {
    if (const auto modifier = modifierOfGlyph(rest[0])) {
      parts.modifiers |= *modifier;
      rest = rest.mid(1).trimmed();
      // "⌘+J" is no less clear than "⌘J"; a plus at the end is the key.
      if (rest.size() > 1 && rest[0] == u'+') rest = rest.mid(1).trimmed();
      continue;
    }
    // A plus at the very front is a key.
    const qsizetype plus = rest.indexOf(u'+', 1);
    const auto modifier = lookUp(modifierWords, (plus < 0 ? rest : rest.left(plus)).trimmed());
    if (!modifier) break;
    parts.modifiers |= *modifier;
    rest = plus < 0 ? QStringView() : rest.mid(plus + 1).trimmed();
  }
  parts.key = rest.toString();
  return parts;
}

// By the name on the keyboard first: a layout may print a word or sign that also stands for something else.
std::optional<qint16> keyNamed(const QString& name) {
  const QString wanted = name.simplified();
  const auto layout = PTKeyCodeTranslator::currentTranslator()->keyboardLayout();
  const auto keyCodeMap = PTKeyCombo::keyCodesDictionary();
  for (qint16 keyCode = 0; keyCode < keyCodeLimit; ++keyCode) {
    // A fresh one for each key, so that a dead key has no part in the name of the next.
    PTKeyCodeTranslator translator(layout);
    const QString known = PTKeyCombo::stringForKeyCodeNew(keyCode, keyCodeMap, translator);
    if (known != QChar(QChar::ReplacementCharacter) && known.compare(wanted, Qt::CaseInsensitive) == 0) return keyCode;
  }
  for (const QString& word : {wanted, QString(wanted).remove(u' ')})
    if (const auto keyCode = lookUp(keyWords, word)) return static_cast<qint16>(*keyCode);
  return std::nullopt;
}

// Signs that few people can name or type are told by the first word for them.
QString wordForKey(const PTKeyCombo& combo) {
  QString name = combo.keyCodeString();
  const auto word = std::ranges::find(keyWords, static_cast<quint32>(combo.keyCode()), &Word::meaning);
  if (name.size() != 1 || word == keyWords.end()) return name;
  name = word->word;
  name[0] = name[0].toUpper();
  return name;
}

bool typesACharacter(qint64 keyCode) {
  // One unit, the replacement character where there is none.
  const QString typed = PTKeyCodeTranslator::currentTranslator()->translateKeyCode(static_cast<qint16>(keyCode));
  return typed[0].isPrint() && typed[0] != QChar(QChar::ReplacementCharacter);
}

// As the keys of a PC are labelled, in the order of the signs.
constexpr std::array modifierNames{
    Word{"Super+"_L1, HotKeyModifier::command},
    Word{"Alt+"_L1, HotKeyModifier::option},
    Word{"Ctrl+"_L1, HotKeyModifier::control},
    Word{"Shift+"_L1, HotKeyModifier::shift},
};

}  // namespace

QString wordsForKeyCombo(const PTKeyCombo& combo) {
  if (!combo.isValidHotKeyCombo()) return combo.description();
  return wordsForModifiers(combo.modifiers()) + wordForKey(combo);
}

QString wordsForModifiers(quint64 modifiers) {
  QString words;
  for (const Word& modifier : modifierNames)
    if ((modifiers & modifier.meaning) != 0) words += modifier.word;
  return words;
}

LossForTyping lossForTyping(const PTKeyCombo& combo) {
  if (!combo.isValidHotKeyCombo()) return LossForTyping::KeyAlone;
  const bool isTyped = combo.modifiers() == HotKeyModifier::shift && typesACharacter(combo.keyCode());
  return isTyped ? LossForTyping::ShiftedKey : LossForTyping::None;
}

PTKeyCombo::Pointer storedShortcut(const std::optional<PropertyListDictionary>& setting) {
  if (!setting) return PTKeyCombo::clearKeyCombo();
  return PTKeyCombo::keyComboWithKeyCode(setting->value(u"keyCode"_s, 0).intValue(),
                                         setting->value(u"modifierFlags"_s, 0).unsignedIntValue());
}

PropertyListDictionary shortcutSetting(const PTKeyCombo& combo) {
  return {{u"keyCode"_s, combo.keyCode()}, {u"modifierFlags"_s, static_cast<qint64>(combo.modifiers())}};
}

PTKeyCombo::Pointer keyComboFromText(const QString& text, QString* reason) {
  const auto wrong = [&](const QString& why) {
    *reason = why;
    return PTKeyCombo::Pointer();
  };
  const Parts parts = split(text);
  if (parts.key.isEmpty()) return wrong(u"\"%1\" has no key in it; one is \"cmd+shift+J\""_s.arg(text));
  const auto keyCode = keyNamed(parts.key);
  if (!keyCode) return wrong(u"there is no key \"%1\" on this keyboard"_s.arg(parts.key));
  if (*keyCode >= firstModifierKey && *keyCode <= lastModifierKey)
    return wrong(u"\"%1\" is a modifier and cannot be the key"_s.arg(parts.key));
  auto combo = PTKeyCombo::keyComboWithKeyCode(*keyCode, parts.modifiers);
  switch (lossForTyping(*combo)) {
    case LossForTyping::None:
      return combo;
    case LossForTyping::KeyAlone:
      return wrong(u"\"%1\" alone would be lost for typing: add cmd, opt, ctrl or shift"_s.arg(parts.key));
    case LossForTyping::ShiftedKey:
      return wrong(u"shift and \"%1\" would be lost for typing: add cmd, opt or ctrl"_s.arg(parts.key));
  }
  return {};
}

}  // namespace quillo
