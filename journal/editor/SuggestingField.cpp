#include "journal/editor/SuggestingField.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "controls/look/JournalStyle.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestList = 8;
constexpr int listMargin = 12;  // in points

}  // namespace

SuggestingField::SuggestingField(Kind kind, Source source, QWidget* parent)
    : QLineEdit(parent), m_kind(kind), m_source(std::move(source)), m_completer(new QCompleter(&m_model, this)) {
  m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
  // The list is ours to fill, and what is taken ours to put in.
  m_completer->setWidget(this);
  m_completer->setMaxVisibleItems(longestList);
  m_completer->popup()->setFont(textFont(13));
  connect(this, &QLineEdit::textEdited, this, &SuggestingField::suggest);
  connect(m_completer, qOverload<const QString&>(&QCompleter::activated), this, &SuggestingField::take);
}

SuggestingField::Part SuggestingField::partAtCaret() const {
  if (m_kind == Kind::One) return {0, text().size()};
  const int caret = cursorPosition();
  const qsizetype comma = text().indexOf(u',', caret);
  return {caret == 0 ? 0 : text().lastIndexOf(u',', caret - 1) + 1, comma < 0 ? text().size() : comma};
}

QStringList SuggestingField::suggestions() const {
  const Part part = partAtCaret();
  return m_source(text().sliced(part.start, part.end - part.start).trimmed());
}

void SuggestingField::suggest() {
  const QStringList found = text().trimmed().isEmpty() ? QStringList() : suggestions();
  if (found.isEmpty()) return closeList();
  m_model.setStringList(found);
  m_completer->setCompletionPrefix({});
  // As wide as what is in it: names may be told apart by their ends.
  const int needed = m_completer->popup()->sizeHintForColumn(0) + 2 * m_completer->popup()->frameWidth() + listMargin;
  m_completer->complete(QRect(0, 0, std::max(width(), needed), height()));
  if (m_kind == Kind::One) m_completer->popup()->setCurrentIndex(m_model.index(0));
}

void SuggestingField::closeList() {
  m_completer->popup()->hide();
}

void SuggestingField::take(const QString& suggestion) {
  const Part part = partAtCaret();
  const QString before = text().first(part.start).trimmed();
  const QString after = text().sliced(part.end);
  QString with = before.isEmpty() ? suggestion : before + u' ' + suggestion;
  if (m_kind == Kind::List && after.isEmpty()) with += u", "_s;
  setText(with + after);
  setCursorPosition(static_cast<int>(with.size()));
  Q_EMIT chosen(suggestion);
}

bool SuggestingField::event(QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool takes = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab;
    const QAbstractItemView* list = m_completer->popup();
    // The list's, which asks the field first.
    if (takes && list->isVisible() && list->currentIndex().isValid()) {
      event->ignore();
      return false;
    }
  }
  // What was changed can be taken back here as long as there is something; then the key is the window's.
  if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Undo) &&
      !isUndoAvailable()) {
    event->ignore();
    return false;
  }
  return QLineEdit::event(event);
}

void SuggestingField::applyColors() {
  const QString style = styleWithColors(
      u"QAbstractItemView { border: 1px solid %line; background: %paper; color: %text; outline: none }"
      "QAbstractItemView::item { padding: 4px 6px }"
      "QAbstractItemView::item:selected { background: %accent; color: %onAccent }"_s,
      JournalColors::current());
  if (m_completer->popup()->styleSheet() != style) m_completer->popup()->setStyleSheet(style);
}

}  // namespace quillo
