#include "qlcore/index/SearchWords.h"

#include <QChar>

#include <array>

namespace quillo {

namespace {

enum class Kind { Separator, Letter, Character, Mark };

bool isBetween(char32_t c, char32_t first, char32_t last) {
  return c >= first && c <= last;
}

// Written without spaces between words.
bool isOfUnpartedScript(char32_t c) {
  switch (QChar::script(c)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Hangul:
    case QChar::Script_Bopomofo:
    case QChar::Script_Yi:
    case QChar::Script_Thai:
    case QChar::Script_Lao:
    case QChar::Script_Khmer:
    case QChar::Script_Myanmar:
      return true;
    default:
      // The sign for a long vowel belongs to two scripts, and so to none.
      return c == 0x30FC || c == 0xFF70;
  }
}

// Vowels and final consonants of a Korean syllable in parts, and the voice marks of narrow kana: they are written
// behind what they belong to, as accents are.
bool isMarkByPlace(char32_t c) {
  return isBetween(c, 0x1160, 0x11FF) || isBetween(c, 0xD7B0, 0xD7FB) || c == 0xFF9E || c == 0xFF9F;
}

Kind kindOf(char32_t c) {
  if (c < 0x80) {
    const char32_t lower = c | 0x20;
    return isBetween(lower, U'a', U'z') || isBetween(c, U'0', U'9') ? Kind::Letter : Kind::Separator;
  }
  if (isBetween(c, 0x3041, 0x3096) || isBetween(c, 0x30A1, 0x30FA) || isBetween(c, 0x4E00, 0x9FFF) ||
      isBetween(c, 0xAC00, 0xD7A3))
    return Kind::Character;
  if (isMarkByPlace(c)) return Kind::Mark;
  if (QChar::isLetterOrNumber(c)) return isOfUnpartedScript(c) ? Kind::Character : Kind::Letter;
  if (QChar::isMark(c)) return Kind::Mark;
  return QChar::category(c) == QChar::Symbol_Other && c != QChar::ReplacementCharacter ? Kind::Character
                                                                                       : Kind::Separator;
}

// Accents of Latin, Greek and Cyrillic letters, vowel points of Hebrew and Arabic, selectors of a form. The vowel signs
// of other scripts are letters but in name and stay.
bool isDropped(char16_t c) {
  return isBetween(c, 0x0300, 0x036F) || isBetween(c, 0x0483, 0x0489) || isBetween(c, 0x0591, 0x05C7) ||
         isBetween(c, 0x0610, 0x061A) || isBetween(c, 0x064B, 0x065F) || c == 0x0670 || isBetween(c, 0x06D6, 0x06ED) ||
         isBetween(c, 0x1AB0, 0x1AFF) || isBetween(c, 0x1DC0, 0x1DFF) || isBetween(c, 0x20D0, 0x20FF) ||
         isBetween(c, 0xFE00, 0xFE0F) || isBetween(c, 0xFE20, 0xFE2F);
}

// Letters with a stroke or a ligature, which no decomposition takes apart.
QStringView withoutStroke(char16_t c) {
  switch (c) {
    case u'ø':
      return u"o";
    case u'ł':
      return u"l";
    case u'đ':
    case u'ð':
      return u"d";
    case u'ħ':
      return u"h";
    case u'ŧ':
      return u"t";
    case u'ı':
      return u"i";
    case u'æ':
      return u"ae";
    case u'œ':
      return u"oe";
    case u'ß':
      return u"ss";
    default:
      return {};
  }
}

QString withoutAccentsAndCase(QStringView word) {
  const QString folded = word.toString().normalized(QString::NormalizationForm_KD).toCaseFolded();
  QString bare;
  bare.reserve(folded.size());
  for (const QChar c : folded) {
    if (isDropped(c.unicode())) continue;
    const QStringView plain = withoutStroke(c.unicode());
    if (plain.isEmpty())
      bare += c;
    else
      bare += plain;
  }
  return bare.normalized(QString::NormalizationForm_KC);
}

QString foldedByRule(QStringView word) {
  const QString bare = withoutAccentsAndCase(word);
  // Some forms stand for several words or hold signs; what is left must be one word whatever reads it.
  QString whole;
  whole.reserve(bare.size());
  for (qsizetype i = 0; i < bare.size(); ++i) {
    const QChar c = bare.at(i);
    const bool isPair = c.isHighSurrogate() && i + 1 < bare.size() && bare.at(i + 1).isLowSurrogate();
    const char32_t point = isPair ? QChar::surrogateToUcs4(c, bare.at(i + 1)) : c.unicode();
    if (kindOf(point) != Kind::Separator) whole += bare.mid(i, isPair ? 2 : 1);
    if (isPair) ++i;
  }
  return whole;
}

// The letters of most alphabets of Europe become one letter each, whatever stands beside them. In the table 0 stands
// for one that is dropped and `byRule` for one that becomes several.
constexpr char16_t tableStart = 0x80;
constexpr char16_t tableEnd = 0x0590;
constexpr char16_t byRule = 0xFFFF;

const std::array<char16_t, tableEnd - tableStart>& foldingTable() {
  static const auto table = [] {
    std::array<char16_t, tableEnd - tableStart> made{};
    for (char16_t c = tableStart; c < tableEnd; ++c) {
      const QChar letter(c);
      const QString folded = foldedByRule(QStringView(&letter, 1));
      made.at(c - tableStart) = folded.isEmpty() ? u'\0' : folded.size() == 1 ? folded.at(0).unicode() : byRule;
    }
    return made;
  }();
  return table;
}

// What needs no folding by itself: unified ideographs, common kana, syllables of Korean.
bool isFolded(char16_t c) {
  return isBetween(c, 0x3041, 0x3096) || isBetween(c, 0x30A1, 0x30FA) || isBetween(c, 0x4E00, 0x9FFF) ||
         isBetween(c, 0xAC00, 0xD7A3);
}

char32_t pointAt(QStringView text, qsizetype at, qsizetype& length) {
  const QChar c = text.at(at);
  length = 1;
  if (!c.isHighSurrogate() || at + 1 >= text.size() || !text.at(at + 1).isLowSurrogate()) return c.unicode();
  length = 2;
  return QChar::surrogateToUcs4(c, text.at(at + 1));
}

}  // namespace

void SearchWords::fold(QStringView word) {
  m_folded.resize(0);
  if (word.size() == 1 && isFolded(word.front().unicode())) {
    m_folded += word;
    return;
  }
  for (const QChar c : word) {
    const char16_t unit = c.unicode();
    if (unit < tableStart) {
      m_folded += QChar(unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit);
      continue;
    }
    const char16_t folded = unit < tableEnd ? foldingTable().at(unit - tableStart) : byRule;
    if (folded == byRule) {
      m_folded = foldedByRule(word);
      break;
    }
    if (folded != 0) m_folded += QChar(folded);
  }
  if (m_folded.size() > longest) m_folded.truncate(longest);
}

bool SearchWords::next() {
  while (m_at < m_text.size()) {
    qsizetype length = 0;
    const Kind kind = kindOf(pointAt(m_text, m_at, length));
    if (kind == Kind::Separator || kind == Kind::Mark) {
      m_at += length;
      continue;
    }
    const qsizetype start = m_at;
    m_isCharacter = kind == Kind::Character;
    for (m_at += length; m_at < m_text.size(); m_at += length) {
      const Kind following = kindOf(pointAt(m_text, m_at, length));
      if (following != Kind::Mark && (m_isCharacter || following != Kind::Letter)) break;
    }
    m_range = {start, m_at - start};
    fold(m_text.sliced(start, m_at - start));
    if (!m_folded.isEmpty()) return true;
  }
  return false;
}

QString foldedName(const QString& name) {
  return withoutAccentsAndCase(name).simplified().left(SearchWords::longest);
}

}  // namespace quillo
