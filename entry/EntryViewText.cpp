#include "entry/EntryViewText.h"

#include "entry/text/EntryViewTextView.h"

#include <utility>

namespace quillo {

void EntryViewText::setView(EntryViewTextView& view) {
  m_view = &view;
  if (!m_text.isEmpty()) setText(std::exchange(m_text, {}));
}

QString EntryViewText::text() const {
  return m_view ? m_view->string() : m_text;
}

void EntryViewText::setText(const QString& text) {
  if (!m_view) {
    m_text = text;
    return;
  }
  m_view->setString(text);
  m_view->moveCursor(QTextCursor::End);
}

void EntryViewText::commitComposition() {
  if (m_view) m_view->commitComposition();
}

}  // namespace quillo
