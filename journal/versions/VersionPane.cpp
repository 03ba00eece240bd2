#include "journal/versions/VersionPane.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "journal/versions/VersionWords.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

VersionPane::VersionPane(const QString& name, QWidget* parent)
    : QWidget(parent),
      m_name(name),
      m_origin(new QLabel(this)),
      m_saved(new QLabel(this)),
      m_details(new QLabel(this)),
      m_text(new QPlainTextEdit(this)) {
  m_origin->setFont(textFont(14, QFont::DemiBold));
  for (QLabel* label : {m_saved, m_details}) {
    label->setFont(textFont(12));
    label->setProperty("role", u"note"_s);
  }
  for (QLabel* label : {m_origin, m_saved, m_details}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
  }
  m_text->setReadOnly(true);
  m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_text->setTabChangesFocus(true);
  m_text->setFont(textFont(14));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(3);
  column->addWidget(m_origin);
  column->addWidget(m_saved);
  column->addWidget(m_details);
  column->addSpacing(3);
  column->addWidget(m_text, 1);
}

void VersionPane::setVersion(const EntryVersion& version, const EntryVersion& other, const QList<TextRange>& different,
                             bool isNewest) {
  const QString origin = VersionWords::origin(version);
  m_origin->setText(u"%1: %2"_s.arg(m_name, origin));
  QString saved = VersionWords::saved(version, locale());
  if (isNewest) saved += u" · the later one"_s;
  m_saved->setText(saved);
  const QStringList details = VersionWords::differences(version, other, locale());
  m_details->setText(details.join(u'\n'));
  m_details->setVisible(!details.isEmpty());
  m_different = different;
  m_text->setPlainText(version.isWhole() ? version.text() : u"This version cannot be read.\n\n"_s + version.damage);
  m_text->setAccessibleName(u"%1: %2. %3"_s.arg(m_name, origin, saved));
  m_text->setAccessibleDescription(different.size() == 1 ? u"1 place differs"_s
                                                         : u"%1 places differ"_s.arg(different.size()));
  mark();
  if (different.isEmpty()) return;
  // The first difference is in view.
  QTextCursor cursor(m_text->document());
  cursor.setPosition(static_cast<int>(different.first().location));
  m_text->setTextCursor(cursor);
  m_text->ensureCursorVisible();
}

void VersionPane::mark() {
  QList<QTextEdit::ExtraSelection> marks;
  for (const TextRange& range : m_different) {
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(m_text->document());
    mark.cursor.setPosition(static_cast<int>(range.location));
    mark.cursor.setPosition(static_cast<int>(range.end()), QTextCursor::KeepAnchor);
    mark.format.setBackground(JournalColors::current().match);
    marks << mark;
  }
  m_text->setExtraSelections(marks);
}

void VersionPane::applyColors() {
  mark();
}

}  // namespace quillo
