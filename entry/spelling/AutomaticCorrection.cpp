#include "entry/spelling/AutomaticCorrection.h"

#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingWords.h"

#include <QPlainTextEdit>
#include <QTextBlock>

namespace quillo {

namespace {

// More undo steps back nobody is surprised to see a word corrected a second time.
constexpr size_t mostCorrectionsRemembered = 32;
constexpr qsizetype mostDeclined = 1000;

bool endsWordAlone(QChar c) {
  return QStringView(u",;!?").contains(c);
}

bool mayFollowWord(QChar c) {
  return QStringView(u".,:;!?)]}*\"'\u201d\u2019\u2026").contains(c);
}

}  // namespace

AutomaticCorrection::AutomaticCorrection(QPlainTextEdit& view, SpellChecker& checker)
    : m_view(view), m_checker(checker) {}

void AutomaticCorrection::userDidType() {
  const QTextCursor caret = m_view.textCursor();
  QTextBlock block = caret.block();
  qsizetype end = caret.positionInBlock();
  QString text = block.text();
  if (end == 0) {
    // A new line ends the last word of the one before.
    block = block.previous();
    if (!block.isValid()) return;
    text = block.text();
    end = text.size();
  } else if (text[end - 1].isSpace()) {
    --end;
  } else if (!endsWordAlone(text[end - 1])) {
    return;
  }
  while (end > 0 && mayFollowWord(text[end - 1])) --end;
  const TextRange run = rangeBetweenSpaces(text, end);
  // What the run of characters is (a hashtag, an address) shows only as a whole.
  if (run.location == 0 && ParagraphSeams::cutsRunBefore(block)) return;
  for (const TextRange& word : wordsToCheck(QStringView(text).sliced(run.location, run.length))) {
    if (run.location + word.end() != end) continue;
    const QString typed = text.mid(run.location + word.location, word.length);
    if (m_declined.contains(typed)) return;
    if (const auto correction = m_checker.confidentCorrection(typed))
      replace(block.position() + static_cast<int>(run.location + word.location), typed, *correction);
    return;
  }
}

void AutomaticCorrection::replace(int start, const QString& typed, const QString& correction) {
  QTextCursor word(m_view.document());
  word.setPosition(start);
  word.setPosition(start + static_cast<int>(typed.size()), QTextCursor::KeepAnchor);
  Made made{QTextCursor(m_view.document()), typed};
  made.start.setPosition(start);
  made.start.setKeepPositionOnInsert(true);
  // The caret's cursor opens the step, so that undoing it leaves the caret where it is now.
  QTextCursor caret = m_view.textCursor();
  m_isReplacing = true;
  caret.beginEditBlock();
  word.insertText(correction);
  caret.endEditBlock();
  m_isReplacing = false;
  // What is typed next must not join this step.
  m_view.document()->setModified(false);
  if (m_made.size() >= mostCorrectionsRemembered) m_made.erase(m_made.begin());
  m_made.push_back(std::move(made));
}

bool AutomaticCorrection::isBack(const Made& made) const {
  const QString text = made.start.block().text();
  const qsizetype start = made.start.positionInBlock();
  const qsizetype end = start + made.typed.size();
  return QStringView(text).mid(start, made.typed.size()) == made.typed &&
         (end == text.size() || !text[end].isLetterOrNumber());
}

void AutomaticCorrection::textDidChange() {
  if (m_isReplacing) return;
  std::erase_if(m_made, [this](const Made& made) {
    if (!isBack(made)) return false;
    if (m_declined.size() < mostDeclined) m_declined.insert(made.typed);
    return true;
  });
}

void AutomaticCorrection::textWasSet() {
  m_made.clear();
  m_declined.clear();
}

}  // namespace quillo
