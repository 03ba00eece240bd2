#pragma once

#include "entry/spelling/GrammarIssue.h"
#include "foundation/TextRange.h"

#include <QDeadlineTimer>
#include <QList>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTimer>

#include <functional>
#include <limits>
#include <optional>

namespace quillo {

class CheckedParagraph;
class SpellChecker;

// Underlines misspelled words in red and grammar issues in green. Positions are the document's.
//
// An edit has only the changed paragraphs checked, at once for as long as a few milliseconds last; what is left over is
// checked in slices of the same length while nothing else goes on, what is on the screen first. With nothing left to
// check no timer runs. The blocks are short, since longer paragraphs are parted (ParagraphSeams).
//
// The word at whose end the user types is left alone until endTyping() or an edit elsewhere.
class SpellingHighlighter : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  // What the highlighter has to know of the view.
  struct View {
    std::function<QList<QTextBlock>()> visibleBlocks;  // the paragraphs on the screen
    std::function<int()> caret;
  };

  // The document owns the highlighter; the checker must outlive it.
  SpellingHighlighter(QTextDocument& document, SpellChecker& checker, View view);
  ~SpellingHighlighter() override;

  void setSpellingEnabled(bool enabled);
  // Whether edits from now on are the user typing at the caret.
  void setTyping(bool typing) { m_isTyping = typing; }
  // The word that was typed has ended: the caret went elsewhere.
  void endTyping();
  [[nodiscard]] int typingPosition() const { return m_typingPosition; }
  // Draws the underlines of a paragraph again, where something else has set its formats.
  void redraw(const QTextBlock& block);

  // The misspelled word that `position` lies in or at an end of.
  [[nodiscard]] std::optional<TextRange> misspellingAt(int position) const;
  [[nodiscard]] QList<TextRange> misspellings() const;

  // Whether this paragraph's grammar was looked at since its last change.
  [[nodiscard]] bool isReviewed(const QTextBlock& block) const;
  // Nothing where the paragraph is no longer `text`.
  void setIssues(const QTextBlock& block, const QString& text, const QList<GrammarIssue>& issues);
  void removeAllIssues();
  // The issue at `position`, its range in the document.
  [[nodiscard]] std::optional<GrammarIssue> issueAt(int position) const;

  // Whether everything has been checked that can be.
  [[nodiscard]] bool isIdle() const { return !m_idle.isActive(); }

 protected:
  void highlightBlock(const QString& text) override;

 private:
  void contentsWillBeHighlighted(int position, int removed, int added);
  void moveIssues(const QTextBlock& block, int position, int removed, int added);
  void checkEverythingAgain();
  void checkLater(const QTextBlock& block);
  void checkSlice();
  // Answers whether the underlines changed.
  bool checkSpelling(const QTextBlock& block);
  void checkAndRedraw(const QTextBlock& block);
  [[nodiscard]] bool needsCheck(const QTextBlock& block) const;
  [[nodiscard]] bool isBeingTyped(const QString& text, TextRange word, int blockPosition) const;

  SpellChecker& m_checker;
  View m_view;
  QTimer m_idle;
  QDeadlineTimer m_editDeadline;
  // No paragraph before this one needs a check.
  int m_firstUnchecked{std::numeric_limits<int>::max()};
  int m_blockCount{1};
  // What a paragraph was checked with; a new number makes all of them old.
  int m_generation{1};
  int m_typingPosition{-1};
  bool m_isTyping{false};
  bool m_isHoldingBack{false};
  bool m_isRedrawing{false};
  bool m_isSpellingEnabled{false};
};

}  // namespace quillo
