#include "entry/spelling/SpellingWords.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar softHyphen{u'\u00ad'};

// Joiners are written inside words of some scripts; a soft hyphen is invisible.
bool isInvisible(QChar c) {
  return c == softHyphen || c == u'\u200c' || c == u'\u200d';
}

bool isWordPart(char32_t c) {
  return QChar::isLetterOrNumber(c) || QChar::isMark(c) || c == U'_';
}

// The character at `at`; half of a surrogate pair stands for itself.
char32_t characterAt(QStringView text, qsizetype at) {
  const QChar c = text[at];
  if (c.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate())
    return QChar::surrogateToUcs4(c, text[at + 1]);
  return c.unicode();
}

qsizetype sizeOf(char32_t c) {
  return QChar::requiresSurrogates(c) ? 2 : 1;
}

bool isAddress(QStringView run) {
  if (run.contains("://"_L1) || run.startsWith("www."_L1, Qt::CaseInsensitive) || run.startsWith("mailto:"_L1) ||
      run.startsWith(u'/') || run.startsWith("~/"_L1))
    return true;
  for (qsizetype i = 1; i + 1 < run.size(); ++i)
    if ((run[i] == u'.' || run[i] == u'@') && run[i - 1].isLetterOrNumber() && run[i + 1].isLetterOrNumber())
      return true;
  return false;
}

// The end of the word part that begins at `at`.
qsizetype endOfToken(QStringView run, qsizetype at) {
  while (at < run.size()) {
    const char32_t c = characterAt(run, at);
    const bool joins = isApostrophe(run[at]) || isInvisible(run[at]);
    if (isWordPart(c))
      at += sizeOf(c);
    else if (joins && at + 1 < run.size() && QChar::isLetter(characterAt(run, at + 1)))
      ++at;
    else
      break;
  }
  return at;
}

qsizetype endOfTag(QStringView run, qsizetype at) {
  while (at < run.size()) {
    const char32_t c = characterAt(run, at);
    if (!isWordPart(c) && c != U'-') break;
    at += sizeOf(c);
  }
  return at;
}

bool isOrdinaryWord(QStringView token) {
  bool hasLetter = false;
  for (qsizetype i = 0; i < token.size();) {
    const char32_t c = characterAt(token, i);
    if (QChar::isNumber(c) || c == U'_') return false;
    hasLetter = hasLetter || QChar::isLetter(c);
    i += sizeOf(c);
  }
  return hasLetter;
}

// `run` holds no space. Every step of the loop moves `at` forward.
void addWordsOfRun(QStringView run, qsizetype offset, QList<TextRange>& words) {
  if (isAddress(run)) return;
  for (qsizetype at = 0; at < run.size();) {
    const char32_t c = characterAt(run, at);
    if (c == U'#' || c == U'@') {
      at = endOfTag(run, at + 1);
      continue;
    }
    if (!isWordPart(c)) {
      at += sizeOf(c);
      continue;
    }
    const qsizetype end = endOfToken(run, at);
    // Underscores around a word are emphasis.
    qsizetype first = at;
    qsizetype last = end;
    while (first < last && run[first] == u'_') ++first;
    while (last > first && run[last - 1] == u'_') --last;
    if (isOrdinaryWord(run.sliced(first, last - first))) words << TextRange::between(offset + first, offset + last);
    at = end;
  }
}

}  // namespace

bool isApostrophe(QChar c) {
  return c == u'\'' || c == u'\u2019';
}

QList<TextRange> wordsToCheck(QStringView line) {
  QList<TextRange> words;
  for (qsizetype at = 0; at < line.size();) {
    const TextRange run = rangeBetweenSpaces(line.sliced(at), 0);
    if (run.length > 0) addWordsOfRun(line.sliced(at, run.length), at, words);
    at += run.length + 1;
  }
  return words;
}

QString dictionaryForm(QStringView word) {
  QString form = word.toString();
  form.remove(softHyphen);
  form.replace(u'\u2019', u'\'');
  return form.normalized(QString::NormalizationForm_C);
}

}  // namespace quillo
