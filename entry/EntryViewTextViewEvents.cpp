// The view's keys and other events: what starts the checks, and what counts as typing.

#include "entry/AutomaticCorrection.h"
#include "entry/EntryViewTextView.h"
#include "entry/GrammarReviewer.h"
#include "entry/HashtagCompleter.h"
#include "entry/SpellingHighlighter.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QTextBlock>
#include <QTextLayout>

namespace quillo {

namespace {

enum class KeyEffect { Other, Types, Deletes };

KeyEffect effectOf(const QKeyEvent& event) {
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

bool isFormatKey(const QKeyEvent& event) {
  return event.matches(QKeySequence::Bold) || event.matches(QKeySequence::Italic);
}

}  // namespace

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
  const KeyEffect effect = effectOf(*event);
  const int revision = document()->revision();
  if (m_highlighter) m_highlighter->setTyping(effect != KeyEffect::Other);
  QPlainTextEdit::keyPressEvent(event);
  if (m_highlighter) m_highlighter->setTyping(false);
  if (effect == KeyEffect::Other || document()->revision() == revision) return;
  if (effect == KeyEffect::Types && m_correctsSpelling) m_correction->userDidType();
  m_completer->userDidType();
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
