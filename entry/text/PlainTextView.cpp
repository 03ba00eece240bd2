#include "entry/text/PlainTextView.h"

#include "entry/document/ParagraphSeams.h"
#include "platform/QtInternals.h"

#include <QAction>
#include <QGuiApplication>
#include <QInputMethod>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextLayout>

#include <algorithm>
#include <cstdlib>

namespace quillo {

PlainTextView::PlainTextView(QWidget* parent)
    : QPlainTextEdit(parent), m_seams(std::make_unique<ParagraphSeams>(*document())) {
  connect(this, &QPlainTextEdit::textChanged, this, &PlainTextView::contentsChanged);
}

PlainTextView::~PlainTextView() = default;

QString PlainTextView::string() const {
  return m_seams->string();
}

void PlainTextView::setString(const QString& text) {
  const QScopedValueRollback setting(m_isSettingString, true);
  m_seams->reset();
  if (text.size() <= ParagraphSeams::longestUnbroken) {
    setPlainText(text);
  } else {
    setPlainText({});
    document()->setUndoRedoEnabled(false);
    QTextCursor start(document());
    m_seams->insert(start, text);
    moveCursor(QTextCursor::Start);
    document()->setUndoRedoEnabled(true);
    document()->setModified(false);
  }
  m_seams->leaveAsItIs();
  m_lastText = string();
  Q_EMIT stringWasSet();
}

void PlainTextView::updateString(const QString& text) {
  const QString before = string();
  if (text == before) return;
  // Positions are not those of the text there; and who waits for a paragraph of that length does not mind the caret.
  if (m_seams->hasSeams()) return setString(text);
  const qsizetype most = std::min(before.size(), text.size());
  qsizetype start = 0;
  while (start < most && before[start] == text[start]) ++start;
  qsizetype end = 0;
  while (end < most - start && before[before.size() - 1 - end] == text[text.size() - 1 - end]) ++end;
  // Halves of a surrogate pair stay together.
  if (start > 0 && before[start - 1].isHighSurrogate()) --start;
  if (end > 0 && before[before.size() - end].isLowSurrogate()) --end;
  const QScopedValueRollback setting(m_isSettingString, true);
  replaceCharacters({start, before.size() - start - end}, text.sliced(start, text.size() - start - end));
  m_seams->leaveAsItIs();
  m_lastText = string();
  Q_EMIT stringWasSet();
}

void PlainTextView::replaceCharacters(TextRange range, const QString& text) {
  if (range.location < 0 || range.length < 0 || range.end() >= document()->characterCount()) return;
  QTextCursor caret = textCursor();
  QTextCursor cursor(document());
  cursor.setPosition(static_cast<int>(range.location));
  cursor.setPosition(static_cast<int>(range.end()), QTextCursor::KeepAnchor);
  caret.beginEditBlock();
  m_seams->insert(cursor, text);
  caret.endEditBlock();
  document()->setModified(false);
}

void PlainTextView::contentsChanged() {
  if (m_isSettingString || m_seams->isArranging()) return;
  // A text that is being composed lies in its block.
  if (m_isUndoing || !textCursor().block().layout()->preeditAreaText().isEmpty())
    m_seams->leaveAsItIs();
  else
    m_seams->arrange();
  // Qt also tells of text that an input method has not committed yet.
  QString now = string();
  if (now == m_lastText) return;
  m_lastText = std::move(now);
  Q_EMIT textDidChange();
}

void PlainTextView::undo() {
  undoUntilTextChanges(&QPlainTextEdit::undo, &QTextDocument::isUndoAvailable);
}

void PlainTextView::redo() {
  undoUntilTextChanges(&QPlainTextEdit::redo, &QTextDocument::isRedoAvailable);
}

// Each turn takes one step off the stack.
void PlainTextView::undoUntilTextChanges(void (QPlainTextEdit::*step)(), bool (QTextDocument::*isAvailable)() const) {
  const QScopedValueRollback undoing(m_isUndoing, true);
  const QString before = m_lastText;
  do {
    (this->*step)();
  } while (m_lastText == before && (document()->*isAvailable)());
}

void PlainTextView::commitComposition() {
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

void PlainTextView::setTextContainerInset(QSizeF inset) {
  document()->setDocumentMargin(0);
  const int horizontal = static_cast<int>(inset.width());
  const int vertical = static_cast<int>(inset.height());
  setViewportMargins(horizontal, vertical, horizontal, vertical);
}

QList<QTextBlock> PlainTextView::visibleBlocks() const {
  QList<QTextBlock> blocks;
  // A paragraph is at least one line high, so that the height of the view bounds their number.
  for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
    if (blockBoundingGeometry(block).translated(contentOffset()).top() > viewport()->height()) break;
    blocks << block;
  }
  return blocks;
}

QMimeData* PlainTextView::createMimeDataFromSelection() const {
  QString selected = ParagraphSeams::selectedString(textCursor());
  // The base class knows no seams.
  if (selected.size() == textCursor().selectedText().size()) return QPlainTextEdit::createMimeDataFromSelection();
  selected.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
  auto plain = std::make_unique<QMimeData>();
  plain->setText(selected);
  return plain.release();
}

bool PlainTextView::canInsertFromMimeData(const QMimeData* source) const {
  return source->hasText() || source->hasHtml();
}

void PlainTextView::insertFromMimeData(const QMimeData* source) {
  // Some programs offer formatted text only.
  const QString text =
      source->hasText() ? source->text() : QTextDocumentFragment::fromHtml(source->html()).toPlainText();
  stepOverSeam(QTextCursor::PreviousCharacter);
  if (text.size() > ParagraphSeams::longestUnbroken) {
    QTextCursor caret = textCursor();
    m_seams->insert(caret, text);
  } else {
    insertPlainText(text);
  }
  ensureCursorVisible();
}

PlainTextView::KeyEffect PlainTextView::effectOf(const QKeyEvent& event) {
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

void PlainTextView::keyPressEvent(QKeyEvent* event) {
  if (!handleEditingKey(*event)) passOnKey(event, effectOf(*event));
}

// What the base class would get wrong in a paragraph with seams.
bool PlainTextView::handleEditingKey(const QKeyEvent& event) {
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
void PlainTextView::passOnKey(QKeyEvent* event, KeyEffect effect) {
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
void PlainTextView::stepOverSeam(QTextCursor::MoveOperation direction) {
  QTextCursor caret = textCursor();
  if (caret.hasSelection()) return;
  const bool isAtSeam = direction == QTextCursor::PreviousCharacter
                            ? caret.atBlockStart() && ParagraphSeams::isBefore(caret.block())
                            : caret.atBlockEnd() && ParagraphSeams::isBehind(caret.block());
  if (!isAtSeam) return;
  caret.movePosition(direction);
  setTextCursor(caret);
}

void PlainTextView::mousePressEvent(QMouseEvent* event) {
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

void PlainTextView::inputMethodEvent(QInputMethodEvent* event) {
  if (!event->commitString().isEmpty() || !event->preeditString().isEmpty()) {
    stepOverSeam(QTextCursor::PreviousCharacter);
    // The base class would do it in one step with the rest, and a block between seams must not be empty meanwhile.
    if (m_seams->hasSeams()) textCursor().removeSelectedText();
  }
  QPlainTextEdit::inputMethodEvent(event);
}

std::unique_ptr<QMenu> PlainTextView::standardMenu(QPoint position) {
  std::unique_ptr<QMenu> menu(createStandardContextMenu(position));
  const auto lead = [&](const QString& name, void (PlainTextView::*command)()) {
    if (auto* item = menu->findChild<QAction*>(name)) {
      item->disconnect(SIGNAL(triggered(bool)));
      connect(item, &QAction::triggered, this, command);
    }
  };
  lead(QtInternals::undoItem, &PlainTextView::undo);
  lead(QtInternals::redoItem, &PlainTextView::redo);
  return menu;
}

}  // namespace quillo
