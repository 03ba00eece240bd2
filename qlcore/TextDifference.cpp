#include "qlcore/TextDifference.h"

#include <algorithm>

namespace quillo::TextDifference {

namespace {

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

// Words that follow one another are one range.
void appendRange(QList<TextRange>& ranges, QStringView part, QStringView text) {
  if (part.isEmpty()) return;
  const qsizetype start = part.begin() - text.begin();
  const qsizetype before = ranges.isEmpty() ? start : ranges.last().end();
  const QStringView between = text.sliced(before, start - before);
  if (!ranges.isEmpty() && between.trimmed().isEmpty() && !between.contains(u'\n'))
    ranges.last().length = start + part.size() - ranges.last().location;
  else
    ranges.append({start, part.size()});
}

}  // namespace

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

bool isWordPart(QChar c) {
  return c.isLetterOrNumber() || c.isMark() || c.isSurrogate() || c == u'_';
}

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

std::vector<Change> changes(const Tokens& base, const Tokens& other) {
  return Difference(base, other).changes();
}

Ranges differentWords(const QString& first, const QString& second) {
  Ranges ranges;
  const Tokens firstParagraphs = paragraphs(first);
  const Tokens secondParagraphs = paragraphs(second);
  for (const Change& change : changes(firstParagraphs, secondParagraphs)) {
    const Tokens one = words(textOf(firstParagraphs, change.baseBegin, change.baseEnd));
    const Tokens other = words(textOf(secondParagraphs, change.begin, change.end));
    for (const Change& part : changes(one, other)) {
      appendRange(ranges.first, textOf(one, part.baseBegin, part.baseEnd), first);
      appendRange(ranges.second, textOf(other, part.begin, part.end), second);
    }
  }
  return ranges;
}

}  // namespace quillo::TextDifference
