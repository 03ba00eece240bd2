#include "entry/text/HashtagCompleter.h"

#include "entry/document/ParagraphSeams.h"
#include "entry/text/EntryViewTextView.h"
#include "entry/text/HashtagCompletionList.h"

#include <QKeyEvent>
#include <QTextBlock>

#include <algorithm>

namespace quillo {

// The widget just below the window that holds the view: what is drawn of the window, without a shadow around it.
static QRect drawnPartOfWindow(const QWidget& view) {
  const QWidget* part = &view;
  while (part->parentWidget() && !part->parentWidget()->isWindow() && !part->isWindow()) part = part->parentWidget();
  return part->isWindow() ? part->rect() : part->geometry();
}

static TextMovement movementForKey(int key) {
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return TextMovement::Return;
    case Qt::Key_Tab:
      return TextMovement::Tab;
    case Qt::Key_Up:
      return TextMovement::Up;
    case Qt::Key_Down:
      return TextMovement::Down;
    default:
      return TextMovement::Other;
  }
}

HashtagCompleter::HashtagCompleter(EntryViewTextView& view) : m_view(view) {}

HashtagCompleter::~HashtagCompleter() {
  // The window's child, and the window may stay.
  delete m_list;
}

bool HashtagCompleter::isOpen() const {
  return m_list && m_list->isVisible();
}

HashtagCompletionList& HashtagCompleter::list() {
  if (m_list && m_list->parentWidget() != m_view.window()) delete m_list;
  if (!m_list) {
    m_list = new HashtagCompletionList(m_view.window());
    connect(m_list, &HashtagCompletionList::chosen, this, [this](const QString& tag) { take(tag, Qt::Key_Return); });
    // Tried in the text while the user moves through the list, as far as the view lets it.
    connect(m_list, &HashtagCompletionList::selectionDidMove, this, [this](const QString& tag) {
      m_view.insertCompletion(u'#' + tag, m_view.rangeForUserCompletion(), TextMovement::Down, /*isFinal=*/false);
    });
  }
  return *m_list;
}

void HashtagCompleter::begin(qsizetype wordStart) {
  m_wordStart = wordStart;
  m_isDismissed = false;
  m_tags = m_source ? m_source() : QStringList();
}

void HashtagCompleter::end() {
  close();
  m_wordStart = -1;
  m_tags.clear();
}

void HashtagCompleter::close() {
  m_isWanted = false;
  hideList();
}

void HashtagCompleter::hideList() {
  if (m_list) m_list->hide();
}

void HashtagCompleter::userDidType() {
  const TextRange word = m_view.rangeForUserCompletion();
  if (word.isNowhere()) {
    end();
    return;
  }
  if (word.location != m_wordStart || word.length == 1) begin(word.location);
  m_isWanted = !m_isDismissed;
  if (m_isWanted) showMatches(word);
}

void HashtagCompleter::sourceDidChange() {
  const TextRange word = m_view.rangeForUserCompletion();
  if (!m_isWanted || !m_source || word.isNowhere() || word.location != m_wordStart) return;
  m_tags = m_source();
  showMatches(word);
}

void HashtagCompleter::showMatches(TextRange word) {
  QTextCursor start(m_view.document());
  start.setPosition(static_cast<int>(word.location));
  QTextCursor name(start);
  name.setPosition(static_cast<int>(word.location + 1));
  name.setPosition(static_cast<int>(word.end()), QTextCursor::KeepAnchor);
  const QString typed = ParagraphSeams::selectedString(name);
  QStringList matches;
  bool isTag = typed.isEmpty();
  for (const QString& tag : std::as_const(m_tags)) {
    if (!tag.startsWith(typed, Qt::CaseInsensitive)) continue;
    isTag = isTag || tag.size() == typed.size();
    if (tag != typed && matches.size() < HashtagCompletionList::maximumRows) matches << tag;
  }
  QRect caret = m_view.cursorRect();
  if (matches.isEmpty() || !m_view.viewport()->rect().intersects(caret)) {
    hideList();
    return;
  }
  // A long word may begin on another line than the caret's.
  const QRect beginning = m_view.cursorRect(start);
  if (beginning.top() == caret.top()) caret = caret.united(beginning);
  const QRect inWindow(m_view.viewport()->mapTo(m_view.window(), caret.topLeft()), caret.size());
  list().showTags(matches, isTag ? -1 : 0, inWindow, start.block().textDirection() == Qt::RightToLeft,
                  drawnPartOfWindow(m_view));
}

void HashtagCompleter::caretDidMove() {
  if (m_wordStart >= 0 && m_view.rangeForUserCompletion().location != m_wordStart) end();
}

void HashtagCompleter::textDidScroll() {
  if (isOpen()) showMatches(m_view.rangeForUserCompletion());
}

bool HashtagCompleter::wantsKey(const QKeyEvent& event) const {
  if (!isOpen() || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;
  switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Tab:
    case Qt::Key_Escape:
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return m_list->selectedRow() >= 0;
    default:
      return false;
  }
}

bool HashtagCompleter::handleKey(const QKeyEvent& event) {
  if (!wantsKey(event)) return false;
  switch (event.key()) {
    case Qt::Key_Up:
      m_list->moveSelection(-1);
      break;
    case Qt::Key_Down:
      m_list->moveSelection(1);
      break;
    case Qt::Key_Escape:
      m_isDismissed = true;
      close();
      break;
    default:
      take(m_list->tags()[std::max(0, m_list->selectedRow())], event.key());
      break;
  }
  return true;
}

void HashtagCompleter::take(const QString& tag, int key) {
  const TextRange word = m_view.rangeForUserCompletion();
  end();
  if (!word.isNowhere()) m_view.insertCompletion(u'#' + tag, word, movementForKey(key), /*isFinal=*/true);
}

}  // namespace quillo
