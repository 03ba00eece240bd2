#include "entry/spelling/SpellingHighlighter.h"

#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingWords.h"
#include "entry/spelling/WavyUnderline.h"

#include <QSignalBlocker>
#include <QTextDocument>

#include <algorithm>
#include <utility>

namespace quillo {

namespace {

// Milliseconds at a time: short enough for the next key press or frame not to wait.
constexpr int sliceDuration = 4;

const QColor misspellingColor(0xd9, 0x30, 0x25);
const QColor issueColor(0x1a, 0x8f, 0x4c);

}  // namespace

// What is known of one paragraph.
class CheckedParagraph : public QTextBlockUserData {
 public:
  int generation{0};
  QList<TextRange> misspellings;  // in the paragraph, in order
  QList<GrammarIssue> issues;
  bool isReviewed{false};
};

static CheckedParagraph* existingParagraph(const QTextBlock& block) {
  return static_cast<CheckedParagraph*>(block.userData());
}

static CheckedParagraph& paragraphOf(QTextBlock block) {
  if (!block.userData()) block.setUserData(new CheckedParagraph);  // the block owns it
  return *existingParagraph(block);
}

SpellingHighlighter::SpellingHighlighter(QTextDocument& document, SpellChecker& checker, View view)
    : QSyntaxHighlighter(static_cast<QObject*>(&document)),  // the other constructor would connect at once
      m_checker(checker),
      m_view(std::move(view)),
      m_blockCount(document.blockCount()) {
  m_idle.setSingleShot(true);
  m_idle.setInterval(0);
  connect(&m_idle, &QTimer::timeout, this, &SpellingHighlighter::checkSlice);
  connect(&checker, &SpellChecker::vocabularyDidChange, this, &SpellingHighlighter::checkEverythingAgain);
  // Before the base class connects: what an edit moved has to be known when it asks for the highlighting.
  connect(&document, &QTextDocument::contentsChange, this, &SpellingHighlighter::contentsWillBeHighlighted);
  setDocument(&document);
}

SpellingHighlighter::~SpellingHighlighter() = default;

void SpellingHighlighter::setSpellingEnabled(bool enabled) {
  if (m_isSpellingEnabled == enabled) return;
  m_isSpellingEnabled = enabled;
  checkEverythingAgain();
}

void SpellingHighlighter::checkEverythingAgain() {
  ++m_generation;
  m_firstUnchecked = 0;
  m_idle.start();
}

void SpellingHighlighter::checkLater(const QTextBlock& block) {
  m_firstUnchecked = std::min(m_firstUnchecked, block.blockNumber());
  if (!m_idle.isActive()) m_idle.start();
}

bool SpellingHighlighter::needsCheck(const QTextBlock& block) const {
  const CheckedParagraph* paragraph = existingParagraph(block);
  return !paragraph || paragraph->generation != m_generation;
}

void SpellingHighlighter::contentsWillBeHighlighted(int position, int removed, int added) {
  if (m_isRedrawing) return;
  m_editDeadline = QDeadlineTimer(sliceDuration);
  if (m_isTyping) {
    m_typingPosition = m_view.caret();
  } else if (m_typingPosition >= 0) {
    if (position <= m_typingPosition) m_typingPosition = std::max(position, m_typingPosition + added - removed);
    endTyping();
  }
  const int blockCount = document()->blockCount();
  const QTextBlock first = document()->findBlock(position);
  const int end = std::min(position + added, document()->characterCount() - 1);
  if (blockCount == m_blockCount && first.contains(end)) {
    moveIssues(first, position, removed, added);
  } else {
    // Each paragraph of the change once; their number is bounded by the size of what was put in.
    for (QTextBlock block = first; block.isValid() && block.position() <= end; block = block.next())
      block.setUserData(nullptr);
    // Paragraphs that wait for their check have moved.
    m_firstUnchecked = std::min(m_firstUnchecked, first.blockNumber());
  }
  m_blockCount = blockCount;
}

// Keeps the issues beside an edit in one paragraph: they would be gone until the grammar is looked at again.
void SpellingHighlighter::moveIssues(const QTextBlock& block, int position, int removed, int added) {
  CheckedParagraph* paragraph = existingParagraph(block);
  if (!paragraph) return;
  paragraph->generation = 0;
  paragraph->isReviewed = false;
  const int start = position - block.position();
  QList<GrammarIssue> kept;
  for (GrammarIssue issue : std::as_const(paragraph->issues)) {
    if (issue.range.location >= start + removed)
      issue.range.location += added - removed;
    else if (issue.range.end() > start)
      continue;
    if (issue.range.end() < block.length()) kept << issue;
  }
  paragraph->issues = kept;
}

void SpellingHighlighter::highlightBlock(const QString& text) {
  const QTextBlock block = currentBlock();
  if (!m_isRedrawing && needsCheck(block)) {
    if (m_editDeadline.hasExpired())
      checkLater(block);
    else
      checkSpelling(block);
  }
  const CheckedParagraph* paragraph = existingParagraph(block);
  if (!paragraph) return;
  const auto draw = [&](TextRange range, const QColor& color) {
    if (range.end() <= text.size())
      setFormat(static_cast<int>(range.location), static_cast<int>(range.length), wavyUnderline(color));
  };
  for (const GrammarIssue& issue : paragraph->issues) draw(issue.range, issueColor);
  for (const TextRange& range : paragraph->misspellings) draw(range, misspellingColor);
}

bool SpellingHighlighter::isBeingTyped(const QString& text, TextRange word, int blockPosition) const {
  const qsizetype caret = m_typingPosition - blockPosition;
  // A caret behind the text stands in the next paragraph.
  if (m_typingPosition < 0 || caret <= word.location || caret > text.size()) return false;
  // An apostrophe may yet turn out to be inside the word.
  return caret <= word.end() || (caret == word.end() + 1 && isApostrophe(text[word.end()]));
}

bool SpellingHighlighter::checkSpelling(const QTextBlock& block) {
  QList<TextRange> found;
  if (m_isSpellingEnabled) {
    const QString text = block.text();
    // What a run of characters is (a word, an address) shows only as a whole.
    const qsizetype from = ParagraphSeams::cutsRunBefore(block) ? rangeBetweenSpaces(text, 0).end() : 0;
    const qsizetype to =
        ParagraphSeams::cutsRunBehind(block) ? rangeBetweenSpaces(text, text.size()).location : text.size();
    for (TextRange word : wordsToCheck(QStringView(text).sliced(from, std::max(from, to) - from))) {
      word.location += from;
      if (isBeingTyped(text, word, block.position()))
        m_isHoldingBack = true;
      else if (m_checker.isMisspelled(QStringView(text).sliced(word.location, word.length)))
        found << word;
    }
  }
  CheckedParagraph& paragraph = paragraphOf(block);
  paragraph.generation = m_generation;
  const bool changed = paragraph.misspellings != found;
  paragraph.misspellings = std::move(found);
  return changed;
}

void SpellingHighlighter::redraw(const QTextBlock& block) {
  // Underlines are no edit: nobody is to take them for one.
  const QSignalBlocker blocker(document());
  const bool before = std::exchange(m_isRedrawing, true);
  rehighlightBlock(block);
  m_isRedrawing = before;
}

void SpellingHighlighter::checkAndRedraw(const QTextBlock& block) {
  if (needsCheck(block) && checkSpelling(block)) redraw(block);
}

void SpellingHighlighter::checkSlice() {
  const QDeadlineTimer deadline(sliceDuration);
  for (const QTextBlock& block : m_view.visibleBlocks()) {
    if (deadline.hasExpired()) break;
    checkAndRedraw(block);
  }
  // One pass over the paragraphs; only an edit or a new vocabulary sets it back.
  QTextBlock block = document()->findBlockByNumber(m_firstUnchecked);
  for (; block.isValid() && !deadline.hasExpired(); block = block.next()) checkAndRedraw(block);
  m_firstUnchecked = block.isValid() ? block.blockNumber() : std::numeric_limits<int>::max();
  if (block.isValid()) m_idle.start();
}

void SpellingHighlighter::endTyping() {
  if (m_typingPosition < 0) return;
  const QTextBlock block = document()->findBlock(m_typingPosition);
  m_typingPosition = -1;
  if (!std::exchange(m_isHoldingBack, false) || !block.isValid()) return;
  paragraphOf(block).generation = 0;
  checkLater(block);
}

std::optional<TextRange> SpellingHighlighter::misspellingAt(int position) const {
  const QTextBlock block = document()->findBlock(position);
  const CheckedParagraph* paragraph = block.isValid() ? existingParagraph(block) : nullptr;
  if (!paragraph) return std::nullopt;
  for (const TextRange& range : paragraph->misspellings) {
    const qsizetype start = block.position() + range.location;
    if (position >= start && position <= start + range.length) return TextRange{start, range.length};
  }
  return std::nullopt;
}

QList<TextRange> SpellingHighlighter::misspellings() const {
  QList<TextRange> all;
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
    if (const CheckedParagraph* paragraph = existingParagraph(block))
      for (const TextRange& range : paragraph->misspellings)
        all << TextRange{block.position() + range.location, range.length};
  return all;
}

bool SpellingHighlighter::isReviewed(const QTextBlock& block) const {
  const CheckedParagraph* paragraph = existingParagraph(block);
  return paragraph && paragraph->isReviewed;
}

void SpellingHighlighter::setIssues(const QTextBlock& block, const QString& text, const QList<GrammarIssue>& issues) {
  if (!block.isValid() || block.text() != text) return;
  CheckedParagraph& paragraph = paragraphOf(block);
  paragraph.isReviewed = true;
  if (paragraph.issues == issues) return;
  paragraph.issues = issues;
  redraw(block);
}

void SpellingHighlighter::removeAllIssues() {
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    CheckedParagraph* paragraph = existingParagraph(block);
    if (!paragraph) continue;
    paragraph->isReviewed = false;
    if (paragraph->issues.isEmpty()) continue;
    paragraph->issues.clear();
    redraw(block);
  }
}

std::optional<GrammarIssue> SpellingHighlighter::issueAt(int position) const {
  const QTextBlock block = document()->findBlock(position);
  const CheckedParagraph* paragraph = block.isValid() ? existingParagraph(block) : nullptr;
  if (!paragraph) return std::nullopt;
  for (GrammarIssue issue : paragraph->issues) {
    issue.range.location += block.position();
    if (position >= issue.range.location && position <= issue.range.end()) return issue;
  }
  return std::nullopt;
}

}  // namespace quillo
