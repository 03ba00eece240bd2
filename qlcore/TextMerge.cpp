#include "qlcore/TextMerge.h"

#include "qlcore/TextDifference.h"

#include <QStringView>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace quillo {

namespace {

using TextDifference::Change;
using TextDifference::isWordPart;
using TextDifference::paragraphs;
using TextDifference::textOf;
using TextDifference::Tokens;
using TextDifference::words;

// What stands in one writer's text for a stretch of the base that begins and ends outside of that writer's changes or
// at their ends. Asked for stretches from left to right.
class Side {
 public:
  Side(const Tokens& base, const Tokens& tokens) : m_tokens(tokens), m_changes(TextDifference::changes(base, tokens)) {}

  [[nodiscard]] const Change* next() const { return m_at < m_changes.size() ? &m_changes[m_at] : nullptr; }
  // The changes that begin up to `end`; they move it on. Touching ones belong together.
  bool takeUpTo(size_t& end) {
    bool isMoved = false;
    for (; next() && next()->baseBegin <= end; ++m_at) {
      isMoved = isMoved || next()->baseEnd > end;
      end = std::max(end, next()->baseEnd);
      m_shift = static_cast<std::ptrdiff_t>(next()->end) - static_cast<std::ptrdiff_t>(next()->baseEnd);
      m_hasChange = true;
    }
    return isMoved;
  }
  // Starts a stretch.
  void begin(size_t baseBegin) {
    m_begin = position(baseBegin);
    m_hasChange = false;
  }
  [[nodiscard]] bool hasChange() const { return m_hasChange; }
  [[nodiscard]] QStringView text(size_t baseEnd) const { return textOf(m_tokens, m_begin, position(baseEnd)); }

 private:
  [[nodiscard]] size_t position(size_t base) const {
    return static_cast<size_t>(static_cast<std::ptrdiff_t>(base) + m_shift);
  }

  const Tokens& m_tokens;
  std::vector<Change> m_changes;
  size_t m_at{0};
  std::ptrdiff_t m_shift{0};
  size_t m_begin{0};
  bool m_hasChange{false};
};

// Puts into `result` what becomes of a stretch that both changed differently; false where that is not clear.
using Decision = std::function<bool(QStringView base, QStringView theirs, QStringView ours, QString& result)>;

// False where a decision was false; the text is then as far as it came.
bool merge(const Tokens& base, const Tokens& theirs, const Tokens& ours, QString& result, const Decision& decide) {
  Side their(base, theirs);
  Side our(base, ours);
  size_t at = 0;
  // Each turn takes at least one change of either side.
  while (their.next() || our.next()) {
    size_t begin = base.size();
    if (their.next()) begin = their.next()->baseBegin;
    if (our.next()) begin = std::min(begin, our.next()->baseBegin);
    result += textOf(base, at, begin);
    their.begin(begin);
    our.begin(begin);
    size_t end = begin;
    for (bool isMoved = true; isMoved;) {
      isMoved = their.takeUpTo(end);
      isMoved = our.takeUpTo(end) || isMoved;
    }
    const QStringView theirText = their.text(end);
    const QStringView ourText = our.text(end);
    if (!our.hasChange() || theirText == ourText)
      result += theirText;
    else if (!their.hasChange())
      result += ourText;
    else if (!decide(textOf(base, begin, end), theirText, ourText, result))
      return false;
    at = end;
  }
  result += textOf(base, at, base.size());
  return true;
}

// Inside of paragraphs; nothing where both put different words in place of the same.
std::optional<QString> mergedByWords(QStringView base, QStringView theirs, QStringView ours) {
  QString text;
  const bool isClear = merge(words(base), words(theirs), words(ours), text,
                             [](QStringView was, QStringView first, QStringView second, QString& result) {
                               if (!was.isEmpty()) return false;
                               result += first;
                               // Two words stay two.
                               if (isWordPart(first.back()) && isWordPart(second.front())) result += u' ';
                               result += second;
                               return true;
                             });
  return isClear ? std::optional(text) : std::nullopt;
}

// Both, as paragraphs of their own.
void appendBoth(QStringView first, QStringView second, QString& result) {
  result += first;
  if (!first.isEmpty() && !second.isEmpty() && !first.endsWith(u'\n')) result += u'\n';
  result += second;
}

// The paragraphs that both have, in this order.
QString commonParagraphs(const Tokens& first, const Tokens& second) {
  QString common;
  size_t at = 0;
  for (const Change& change : TextDifference::changes(first, second)) {
    common += textOf(first, at, change.baseBegin);
    at = change.baseEnd;
  }
  common += textOf(first, at, first.size());
  return common;
}

// Whether all that `less` says is in `more`, in the same order. Spaces say nothing.
bool hasAllOf(QStringView more, QStringView less) {
  const Tokens wanted = words(less);
  size_t found = 0;
  const auto passSpaces = [&] {
    while (found < wanted.size() && wanted[found].trimmed().isEmpty()) ++found;
  };
  passSpaces();
  for (const QStringView word : words(more)) {
    if (found == wanted.size()) break;
    if (word == wanted[found]) ++found;
    passSpaces();
  }
  return found == wanted.size();
}

}  // namespace

MergedText mergeTexts(const QString& base, const QString& theirs, const QString& ours) {
  MergedText merged;
  const auto decide = [&merged](QStringView was, QStringView first, QStringView second, QString& result) {
    if (const auto text = mergedByWords(was, first, second)) {
      result += *text;
      return true;
    }
    merged.hasClash = true;
    appendBoth(first, second, result);
    return true;
  };
  merge(paragraphs(base), paragraphs(theirs), paragraphs(ours), merged.text, decide);
  return merged;
}

MergedText unitedTexts(const QString& first, const QString& second) {
  const QString common = commonParagraphs(paragraphs(first), paragraphs(second));
  MergedText united;
  const auto decide = [&united](QStringView, QStringView one, QStringView other, QString& result) {
    if (hasAllOf(one, other)) {
      result += one;
    } else if (hasAllOf(other, one)) {
      result += other;
    } else {
      united.hasClash = true;
      appendBoth(one, other, result);
    }
    return true;
  };
  merge(paragraphs(common), paragraphs(first), paragraphs(second), united.text, decide);
  return united;
}

}  // namespace quillo
