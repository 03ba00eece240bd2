#include "entry/EntryViewTextView.h"

#include "controls/QLScroller.h"

#include <QMimeData>
#include <QTextDocument>
#include <QTextDocumentFragment>

namespace quillo {

EntryViewTextView::EntryViewTextView(QWidget* parent) : QPlainTextEdit(parent) {
  setAcceptDrops(false);
  viewport()->setAcceptDrops(false);
  setFrameShape(NoFrame);
  // Tab leads on to the buttons.
  setTabChangesFocus(true);
  setVerticalScrollBar(new QLScroller(Qt::Vertical));
  setHorizontalScrollBar(new QLScroller(Qt::Horizontal));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // The paper behind shows through.
  QPalette clear = palette();
  clear.setColor(QPalette::Base, Qt::transparent);
  setPalette(clear);
  viewport()->setAutoFillBackground(false);
  connect(this, &QPlainTextEdit::textChanged, this, &EntryViewTextView::contentsChanged);
}

QString EntryViewTextView::string() const {
  // toPlainText() would turn no-break spaces into spaces.
  QString text = document()->toRawText();
  for (QChar& c : text)
    if (c == QChar::ParagraphSeparator || c == QChar::LineSeparator) c = u'\n';
  return text;
}

void EntryViewTextView::setString(const QString& text) {
  m_isSettingString = true;
  setPlainText(text);
  m_isSettingString = false;
  m_lastString = string();
}

void EntryViewTextView::setTextContainerInset(QSizeF inset) {
  document()->setDocumentMargin(0);
  const int horizontal = static_cast<int>(inset.width());
  const int vertical = static_cast<int>(inset.height());
  setViewportMargins(horizontal, vertical, horizontal, vertical);
}

void EntryViewTextView::contentsChanged() {
  if (m_isSettingString) return;
  // The toolkit also tells of underlines, and of text that an input method has not committed yet.
  QString now = string();
  if (now == m_lastString) return;
  m_lastString = std::move(now);
  Q_EMIT textDidChange();
}

bool EntryViewTextView::canInsertFromMimeData(const QMimeData* source) const {
  return source->hasText() || source->hasHtml();
}

void EntryViewTextView::insertFromMimeData(const QMimeData* source) {
  // Some programs offer formatted text only.
  insertPlainText(source->hasText() ? source->text() : QTextDocumentFragment::fromHtml(source->html()).toPlainText());
  ensureCursorVisible();
}

}  // namespace quillo
