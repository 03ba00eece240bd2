#include "qlcore/index/EntryExcerpt.h"

#include "qlcore/index/SearchWords.h"

#include <algorithm>
#include <optional>

namespace quillo {

namespace {

constexpr qsizetype longestExcerpt = 180;
// Text to show before the first match.
constexpr qsizetype before = 40;
// How far into a text a match is looked for.
constexpr qsizetype furthest = 400'000;

}  // namespace

EntryExcerpt::EntryExcerpt(const JournalQuestion& question) {
  for (const auto& phrase : question.phrases) {
    if (phrase.isExcluded) continue;
    Phrase sought{{}, phrase.isPrefix};
    SearchWords words(phrase.text);
    while (words.next()) sought.words << words.folded().toString();
    if (!sought.words.isEmpty()) m_phrases.push_back(sought);
  }
}

qsizetype EntryExcerpt::endingPhrase(const std::vector<Word>& words, const Phrase& phrase) {
  const auto count = static_cast<size_t>(phrase.words.size());
  if (count > words.size()) return 0;
  const size_t first = words.size() - count;
  for (size_t i = 0; i < count; ++i) {
    const QString& sought = phrase.words[static_cast<qsizetype>(i)];
    const QString& word = words[first + i].folded;
    const bool mayGoOn = phrase.isPrefix && i + 1 == count;
    if (mayGoOn ? !word.startsWith(sought) : word != sought) return 0;
  }
  return phrase.words.size();
}

void EntryExcerpt::find(IndexedEntry& entry) const {
  const QString& text = entry.text;
  std::vector<Word> words;
  QList<TextRange> matches;
  const auto endOf = [](const TextRange& range) { return range.end(); };
  // Without a match the beginning is shown, and no more than that has to be looked through.
  qsizetype limit = m_phrases.empty() ? longestExcerpt : furthest;
  SearchWords next(text);
  while (next.next() && endOf(next.range()) <= limit) {
    words.push_back({m_phrases.empty() ? QString() : next.folded().toString(), next.range()});
    for (const Phrase& phrase : m_phrases) {
      const qsizetype count = endingPhrase(words, phrase);
      if (count == 0) continue;
      if (matches.isEmpty())
        limit = std::max(words[words.size() - static_cast<size_t>(count)].range.location - before, qsizetype{0}) +
                longestExcerpt;
      // All its words, with what stands between them.
      TextRange range = words[words.size() - static_cast<size_t>(count)].range;
      range.length = endOf(words.back().range) - range.location;
      // Phrases may overlap: they become one match.
      while (!matches.isEmpty() && endOf(matches.constLast()) > range.location) {
        range.length =
            std::max(endOf(range), endOf(matches.constLast())) - std::min(range.location, matches.constLast().location);
        range.location = std::min(range.location, matches.constLast().location);
        matches.removeLast();
      }
      matches << range;
    }
  }
  qsizetype start = 0;
  if (!matches.isEmpty() && matches.constFirst().location > before && text.size() > longestExcerpt) {
    // At the beginning of a word.
    const qsizetype wanted = matches.constFirst().location - before;
    const auto word =
        std::find_if(words.begin(), words.end(), [wanted](const Word& w) { return w.range.location >= wanted; });
    start = std::min(word->range.location, matches.constFirst().location);
  }
  qsizetype end = text.size();
  if (end - start > longestExcerpt) {
    end = start;
    for (const Word& word : words)
      if (word.range.location >= start && endOf(word.range) <= start + longestExcerpt) end = endOf(word.range);
    // A word longer than that, or none at all.
    if (end == start) end = start + longestExcerpt - (text.at(start + longestExcerpt - 1).isHighSurrogate() ? 1 : 0);
  }
  entry.excerpt = {start, end - start};
  entry.matches.clear();
  for (const TextRange& match : matches)
    if (match.location >= start && endOf(match) <= end) entry.matches << match;
}

}  // namespace quillo
