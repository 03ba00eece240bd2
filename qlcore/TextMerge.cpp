#include "qlcore/TextMerge.h"

#include <QStringView>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace quillo {

namespace {

using Tokens = std::vector<QStringView>;

// Paragraphs, each with its line break.
Tokens paragraphs(QStringView text) {
  Tokens tokens;
  for (qsizetype from = 0; from < text.size();) {
    const qsizetype end = text.indexOf(u'\n', from);
    const qsizetype next = end < 0 ? text.size() : end + 1;
    tokens.push_back(text.sliced(from, next - from));
    from = next;
  }
  return tokens;
}

// A surrogate pair counts as a word's.
bool isWordPart(QChar c) {
  return c.isLetterOrNumber() || c.isMark() || c.isSurrogate() || c == u'_';
}

// Words, stretches of spaces, and every other character by itself.
Tokens words(QStringView text) {
  const auto kind = [](QChar c) {
    if (isWordPart(c)) return 1;
    return c.isSpace() && c != u'\n' ? 2 : 0;
  };
  Tokens tokens;
  for (qsizetype from = 0; from < text.size();) {
    qsizetype end = from + 1;
    const int first = kind(text[from]);
    while (first != 0 && end < text.size() && kind(text[end]) == first) ++end;
    tokens.push_back(text.sliced(from, end - from));
    from = end;
  }
  return tokens;
}

QStringView textOf(const Tokens& tokens, size_t begin, size_t end) {
  if (begin == end) return {};
  // Tokens lie side by side in their text.
  return {tokens[begin].begin(), tokens[end - 1].end()};
}

// A stretch of the base, and what stands in its place.
struct Change {
  size_t baseBegin, baseEnd;
  size_t begin, end;
};

// More steps than that and the middle of the two counts as one change: the search keeps their square of numbers.
constexpr int mostSteps = 1500;

// The shortest way from `base` to `other` by removing and adding tokens: Myers, "An O(ND) Difference Algorithm and Its
// Variations", 1986. Identical beginnings and ends are passed over first.
class Difference {
 public:
  Difference(const Tokens& base, const Tokens& other) : m_base(base), m_other(other) {}

  std::vector<Change> changes() {
    size_t begin = 0;
    size_t baseEnd = m_base.size();
    size_t end = m_other.size();
    while (begin < baseEnd && begin < end && m_base[begin] == m_other[begin]) ++begin;
    while (baseEnd > begin && end > begin && m_base[baseEnd - 1] == m_other[end - 1]) --baseEnd, --end;
    if (begin == baseEnd && begin == end) return {};
    m_begin = begin;
    m_baseCount = static_cast<int>(baseEnd - begin);
    m_count = static_cast<int>(end - begin);
    if (m_baseCount == 0 || m_count == 0 || !findPath()) return {{begin, baseEnd, begin, end}};
    return pathChanges();
  }

 private:
  [[nodiscard]] bool isSame(int x, int y) const {
    return m_base[m_begin + static_cast<size_t>(x)] == m_other[m_begin + static_cast<size_t>(y)];
  }
  // The furthest `x` on diagonal `k` after `step` steps.
  [[nodiscard]] int furthest(int step, int k) const {
    return m_furthest[static_cast<size_t>(step)][static_cast<size_t>(k + step)];
  }
  [[nodiscard]] bool comesByAdding(int step, int k) const {
    return k == -step || (k != step && furthest(step - 1, k - 1) < furthest(step - 1, k + 1));
  }
  bool findPath();
  [[nodiscard]] std::vector<Change> pathChanges() const;

  const Tokens& m_base;
  const Tokens& m_other;
  size_t m_begin{0};
  int m_baseCount{0};
  int m_count{0};
  std::vector<std::vector<int>> m_furthest;
};

bool Difference::findPath() {
  // At most both lengths together, where every token is replaced.
  const int most = std::min(mostSteps, m_baseCount + m_count);
  for (int step = 0; step <= most; ++step) {
    m_furthest.emplace_back(static_cast<size_t>(2 * step + 1));
    for (int k = -step; k <= step; k += 2) {
      int x = 0;
      if (step > 0) x = comesByAdding(step, k) ? furthest(step - 1, k + 1) : furthest(step - 1, k - 1) + 1;
      int y = x - k;
      while (x < m_baseCount && y < m_count && y >= 0 && isSame(x, y)) ++x, ++y;
      m_furthest.back()[static_cast<size_t>(k + step)] = x;
      if (x >= m_baseCount && y >= m_count) return true;
    }
  }
  return false;
}

std::vector<Change> Difference::pathChanges() const {
  std::vector<Change> changes;
  int x = m_baseCount;
  int y = m_count;
  for (int step = static_cast<int>(m_furthest.size()) - 1; step > 0; --step) {
    const int k = x - y;
    const bool isAdded = comesByAdding(step, k);
    const int before = furthest(step - 1, isAdded ? k + 1 : k - 1);
    const int beforeY = before - (isAdded ? k + 1 : k - 1);
    // The step itself; then come tokens that are the same, up to x and y.
    const auto at = [this](int index) { return m_begin + static_cast<size_t>(index); };
    const Change change{at(before), at(isAdded ? before : before + 1), at(beforeY),
                        at(isAdded ? beforeY + 1 : beforeY)};
    if (!changes.empty() && changes.back().baseBegin == change.baseEnd && changes.back().begin == change.end) {
      changes.back().baseBegin = change.baseBegin;
      changes.back().begin = change.begin;
    } else {
      changes.push_back(change);
    }
    x = before;
    y = beforeY;
  }
  std::reverse(changes.begin(), changes.end());
  return changes;
}

// What stands in one writer's text for a stretch of the base that begins and ends outside of that writer's changes or
// at their ends. Asked for stretches from left to right.
class Side {
 public:
  Side(const Tokens& base, const Tokens& tokens) : m_tokens(tokens), m_changes(Difference(base, tokens).changes()) {}

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
  for (const Change& change : Difference(first, second).changes()) {
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
