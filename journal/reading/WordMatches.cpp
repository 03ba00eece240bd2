#include "journal/reading/WordMatches.h"

#include <QStringList>

#include <algorithm>

namespace quillo {

namespace {

// A text without case and accents, and where each of its units stands in the text that it was made of.
struct Folded {
  QString text;
  QList<qsizetype> origins;
};

Folded folded(const QString& text) {
  Folded result;
  result.text.reserve(text.size());
  for (qsizetype at = 0; at < text.size();) {
    const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    const qsizetype length = isPair ? 2 : 1;
    QString plain = text.mid(at, length);
    if (isPair || text[at].unicode() >= 0x80) plain = plain.normalized(QString::NormalizationForm_KD);
    for (const QChar c : plain.toCaseFolded()) {
      if (c.isMark()) continue;
      result.text += c;
      result.origins << at;
    }
    at += length;
  }
  return result;
}

bool isInsideWord(const QString& text, qsizetype at) {
  return at > 0 && text[at - 1].isLetterOrNumber() && text[at].isLetterOrNumber();
}

}  // namespace

QList<WordMatch> wordMatches(const QString& text, const QStringList& words) {
  if (words.isEmpty()) return {};
  const Folded where = folded(text);
  QList<WordMatch> found;
  for (const QString& word : words) {
    const QString what = folded(word.trimmed()).text;
    if (what.isEmpty()) continue;
    for (qsizetype at = where.text.indexOf(what); at >= 0; at = where.text.indexOf(what, at + what.size())) {
      if (isInsideWord(where.text, at)) continue;
      const qsizetype start = where.origins[at];
      const qsizetype behind = at + what.size();
      const qsizetype end = behind < where.origins.size() ? where.origins[behind] : text.size();
      found.append({start, end - start});
    }
  }
  std::sort(found.begin(), found.end(), [](const WordMatch& a, const WordMatch& b) {
    return a.start != b.start ? a.start < b.start : a.length > b.length;
  });
  QList<WordMatch> apart;
  for (const WordMatch& match : found)
    if (apart.isEmpty() || match.start >= apart.last().start + apart.last().length) apart << match;
  return apart;
}

}  // namespace quillo
