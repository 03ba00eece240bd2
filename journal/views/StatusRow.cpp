#include "journal/views/StatusRow.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "journal/views/NoticeBar.h"

#include <QHBoxLayout>
#include <QLabel>

namespace quillo {

StatusRow::StatusRow(QWidget* parent)
    : QWidget(parent), m_words(new QLabel(this)), m_state(new QLabel(this)), m_notices(new NoticeBar(this)) {
  setFixedHeight(38);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(18, 0, 14, 0);
  row->setSpacing(18);
  for (QLabel* label : {m_words, m_state}) {
    label->setFont(textFont(12));
    row->addWidget(label);
  }
  row->addStretch(1);
  row->addWidget(m_notices);
  applyColors();
}

void StatusRow::setWords(const QString& text) {
  m_words->setText(text);
}

void StatusRow::setState(const QString& text) {
  m_state->setText(text);
}

void StatusRow::applyColors() {
  const JournalColors colors = JournalColors::current();
  for (QLabel* label : {m_words, m_state}) {
    QPalette own = label->palette();
    own.setColor(QPalette::WindowText, colors.dim);
    label->setPalette(own);
  }
}

}  // namespace quillo
