// The view's keys and other events: what starts the checks, and what counts as typing.

#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/AutomaticCorrection.h"
#include "entry/spelling/GrammarReviewer.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/text/EntryViewTextView.h"
#include "entry/text/HashtagCompleter.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cstdlib>

namespace quillo {

namespace {

bool isFormatKey(const QKeyEvent& event) {
  return event.matches(QKeySequence::Bold) || event.matches(QKeySequence::Italic);
}

}  // namespace

EntryViewTextView::KeyEffect EntryViewTextView::effectOf(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
      return KeyEffect::Deletes;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return KeyEffect::Types;
    default:
      break;
  }
  // Control makes a command of a letter, but not together with Alt, which some layouts type characters with.
  if ((event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == Qt::ControlModifier || event.text().isEmpty())
    return KeyEffect::Other;
  const QChar first = event.text().front();
  return first.isPrint() || first.isSurrogate() ? KeyEffect::Types : KeyEffect::Other;
}

bool EntryViewTextView::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride: {
      const auto& key = static_cast<QKeyEvent&>(*event);
      if (m_completer->wantsKey(key) || (isFormatKey(key) && canFormatSelection())) {
        event->accept();
        return true;
      }
      break;
    }
    case QEvent::KeyPress:
      // The base class would move the focus at a Tab before anything else.
      if (const auto& key = static_cast<QKeyEvent&>(*event); key.key() == Qt::Key_Tab && m_completer->handleKey(key)) {
        event->accept();
        return true;
      }
      break;
    default:
      break;
  }
  return QPlainTextEdit::event(event);
}

void EntryViewTextView::keyPressEvent(QKeyEvent* event) {
  beginChecking();
  if (m_completer->handleKey(*event)) return;
  if (isFormatKey(*event) && canFormatSelection()) {
    if (event->matches(QKeySequence::Bold))
      makeSelectionBold();
    else
      makeSelectionItalic();
    return;
  }
  if (handleEditingKey(*event)) return;
  const KeyEffect effect = effectOf(*event);
  const int revision = document()->revision();
  if (m_highlighter) m_highlighter->setTyping(effect != KeyEffect::Other);
  passOnKey(event, effect);
  if (m_highlighter) m_highlighter->setTyping(false);
  if (effect == KeyEffect::Other || document()->revision() == revision) return;
  if (effect == KeyEffect::Types && m_correctsSpelling) m_correction->userDidType();
  m_completer->userDidType();
}

// What the base class would get wrong in a paragraph with seams.
bool EntryViewTextView::handleEditingKey(const QKeyEvent& event) {
  if (isReadOnly()) return false;
  if (event.matches(QKeySequence::Undo)) {
    undo();
    return true;
  }
  if (event.matches(QKeySequence::Redo)) {
    redo();
    return true;
  }
  QTextCursor rest = textCursor();
  const QTextBlock last = ParagraphSeams::lastBlock(rest.block());
  if (last == rest.block() || !event.matches(QKeySequence::DeleteEndOfLine)) return false;
  rest.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
  rest.removeSelectedText();
  return true;
}

// The base class takes a seam for a character.
void EntryViewTextView::passOnKey(QKeyEvent* event, KeyEffect effect) {
  if (effect == KeyEffect::Deletes)
    stepOverSeam(event->key() == Qt::Key_Backspace ? QTextCursor::PreviousCharacter : QTextCursor::NextCharacter);
  else if (effect == KeyEffect::Types)
    stepOverSeam(QTextCursor::PreviousCharacter);
  const int before = textCursor().position();
  QPlainTextEdit::keyPressEvent(event);
  const int after = textCursor().position();
  if (effect != KeyEffect::Other || std::abs(after - before) != 1) return;
  const QTextBlock block = document()->findBlock(std::max(before, after));
  // It went over nothing else.
  if (block.position() == std::max(before, after) && ParagraphSeams::isBefore(block))
    QPlainTextEdit::keyPressEvent(event);
}

// The places before and behind a seam are the same one to the user. What is typed goes before it, as it may join the
// last character there.
void EntryViewTextView::stepOverSeam(QTextCursor::MoveOperation direction) {
  QTextCursor caret = textCursor();
  if (caret.hasSelection()) return;
  const bool isAtSeam = direction == QTextCursor::PreviousCharacter
                            ? caret.atBlockStart() && ParagraphSeams::isBefore(caret.block())
                            : caret.atBlockEnd() && ParagraphSeams::isBehind(caret.block());
  if (!isAtSeam) return;
  caret.movePosition(direction);
  setTextCursor(caret);
}

void EntryViewTextView::mousePressEvent(QMouseEvent* event) {
  QPlainTextEdit::mousePressEvent(event);
  QTextCursor selection = textCursor();
  const QTextBlock block = document()->findBlock(selection.selectionStart());
  // A third click has selected the block, with what parts it from the next one.
  const bool isBlock = selection.hasSelection() && selection.selectionStart() == block.position() &&
                       selection.selectionEnd() == block.position() + block.length();
  if (!isBlock || !(ParagraphSeams::isBefore(block) || ParagraphSeams::isBehind(block))) return;
  const QTextBlock last = ParagraphSeams::lastBlock(block);
  selection.setPosition(ParagraphSeams::firstBlock(block).position());
  selection.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
  selection.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
  setTextCursor(selection);
}

void EntryViewTextView::commitComposition() {
  const auto composed = [this] { return textCursor().block().layout()->preeditAreaText(); };
  if (composed().isEmpty()) return;
  if (hasFocus()) QGuiApplication::inputMethod()->commit();
  // Not every input method can be told so.
  const QString left = composed();
  if (left.isEmpty()) return;
  QInputMethodEvent commit;
  commit.setCommitString(left);
  QCoreApplication::sendEvent(this, &commit);
  if (hasFocus()) QGuiApplication::inputMethod()->reset();
}

void EntryViewTextView::inputMethodEvent(QInputMethodEvent* event) {
  beginChecking();
  const bool commits = !event->commitString().isEmpty();
  const bool composes = !event->preeditString().isEmpty();
  if (commits || composes) {
    stepOverSeam(QTextCursor::PreviousCharacter);
    // The base class would do it in one step with the rest, and a block between seams must not be empty meanwhile.
    if (m_seams->hasSeams()) textCursor().removeSelectedText();
  }
  if (m_highlighter) m_highlighter->setTyping(true);
  QPlainTextEdit::inputMethodEvent(event);
  if (m_highlighter) {
    m_highlighter->setTyping(false);
    // The base class has replaced the underlines by those of the text being composed.
    m_highlighter->redraw(textCursor().block());
  }
  if (commits && m_correctsSpelling) m_correction->userDidType();
  if (composes)
    m_completer->close();
  else if (commits)
    m_completer->userDidType();
}

void EntryViewTextView::contextMenuEvent(QContextMenuEvent* event) {
  m_completer->close();
  QMenu* menu = menuForEvent(*event).release();
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(event->globalPos());
}

void EntryViewTextView::focusInEvent(QFocusEvent* event) {
  QPlainTextEdit::focusInEvent(event);
  if (m_grammar) m_grammar->tryAgain();
}

void EntryViewTextView::focusOutEvent(QFocusEvent* event) {
  if (m_highlighter && event->reason() != Qt::PopupFocusReason) m_highlighter->endTyping();
  m_completer->close();
  QPlainTextEdit::focusOutEvent(event);
}

void EntryViewTextView::showEvent(QShowEvent* event) {
  awakeFromNib();
  QPlainTextEdit::showEvent(event);
}

void EntryViewTextView::hideEvent(QHideEvent* event) {
  m_completer->close();
  QPlainTextEdit::hideEvent(event);
}

}  // namespace quillo
