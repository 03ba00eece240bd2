#include "qlcore/Hashtags.h"

#include <QSet>

namespace quillo {

namespace {

// Marks (vowel signs, accents written apart) belong to the character before them: they go on with a word that has begun
// and begin none. Without them no tag could be written in the scripts of India, while the keycap "#" with its two marks
// is not the start of a tag.
bool isWord(char32_t c, bool afterWord) {
  return QChar::isLetter(c) || QChar::isDigit(c) || c == U'_' || (afterWord && QChar::isMark(c));
}

// The character at `at`, which moves behind it; half of a surrogate pair stands for itself.
char32_t next(const QString& text, qsizetype& at) {
  const QChar c = text[at++];
  if (c.isHighSurrogate() && at < text.size() && text[at].isLowSurrogate())
    return QChar::surrogateToUcs4(c, text[at++]);
  return c.unicode();
}

}  // namespace

QList<HashtagRange> hashtagRanges(const QString& text) {
  QList<HashtagRange> ranges;
  bool afterWord = false;
  // One pass: both loops only move `at` forward.
  for (qsizetype at = 0; at < text.size();) {
    const char32_t c = next(text, at);
    if (c != U'#' || afterWord) {
      afterWord = isWord(c, afterWord);
      continue;
    }
    const qsizetype start = at;
    bool hasLetter = false;
    for (qsizetype behind = at; at < text.size(); at = behind) {
      const char32_t part = next(text, behind);
      if (!isWord(part, afterWord) && part != U'-') break;
      hasLetter = hasLetter || QChar::isLetter(part);
      afterWord = isWord(part, afterWord);
    }
    if (hasLetter) ranges.append({start - 1, at - start + 1});
  }
  return ranges;
}

QStringList hashtags(const QString& text) {
  QStringList tags;
  QSet<QString> seen;
  for (const HashtagRange& range : hashtagRanges(text)) {
    const QString tag = text.mid(range.start + 1, range.length - 1);
    const qsizetype known = seen.size();
    seen.insert(tag.toCaseFolded());
    if (seen.size() > known) tags << tag;
  }
  return tags;
}

QStringList tagsAfterEditing(const QStringList& tags, const QString& before, const QString& after) {
  const QStringList were = hashtags(before);
  const QStringList are = hashtags(after);
  const QSet<QString> known(were.begin(), were.end());
  const QSet<QString> left(are.begin(), are.end());
  QStringList kept;
  for (const QString& tag : tags)
    if (left.contains(tag) || !known.contains(tag)) kept << tag;
  for (const QString& tag : are)
    if (!known.contains(tag) && !kept.contains(tag, Qt::CaseInsensitive)) kept << tag;
  return kept;
}

}  // namespace quillo
