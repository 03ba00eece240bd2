#include "journal/views/StatePage.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

StatePage::StatePage(QWidget* parent)
    : QWidget(parent), m_title(new QLabel(this)), m_reason(new QLabel(this)), m_buttonColumn(new QVBoxLayout) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(32, 32, 32, 32);
  column->setSpacing(10);
  column->addStretch(2);
  for (QLabel* label : {m_title, m_reason}) {
    label->setAlignment(Qt::AlignHCenter);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    column->addWidget(label);
  }
  m_title->setFont(textFont(18, QFont::DemiBold));
  m_reason->setFont(textFont(14));
  column->addSpacing(8);
  column->addLayout(m_buttonColumn);
  column->addStretch(3);
  applyColors();
}

void StatePage::show(const QString& title, const QString& reason, const QList<Action>& actions) {
  // Not at once: it may be one of them that is being clicked.
  for (QPushButton* button : std::exchange(m_buttons, {})) {
    button->hide();
    button->deleteLater();
  }
  m_title->setText(title);
  m_reason->setText(reason);
  for (const Action& action : actions) {
    auto* button = new QPushButton(action.title, this);
    button->setFont(textFont(14, m_buttons.isEmpty() ? QFont::DemiBold : QFont::Normal));
    connect(button, &QPushButton::clicked, this, action.act);
    m_buttonColumn->addWidget(button, 0, Qt::AlignHCenter);
    m_buttons << button;
  }
  setFocusProxy(m_buttons.isEmpty() ? nullptr : m_buttons.first());
  applyColors();
}

void StatePage::applyColors() {
  const JournalColors colors = JournalColors::current();
  for (const auto& [label, color] : {std::pair(m_title, colors.text), std::pair(m_reason, colors.dim)}) {
    QPalette own = label->palette();
    own.setColor(QPalette::WindowText, color);
    label->setPalette(own);
  }
}

}  // namespace quillo
