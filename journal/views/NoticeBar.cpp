#include "journal/views/NoticeBar.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// In points, of the row that the notice stands in.
constexpr int roomForOthers = 150;
constexpr int roomForButton = 90;
constexpr int shortestText = 120;

}  // namespace

NoticeBar::NoticeBar(QWidget* parent) : QFrame(parent), m_text(new QLabel(this)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(10, 3, 10, 3);
  row->setSpacing(10);
  row->addWidget(m_text);
  m_text->setFont(textFont(13));
  m_text->setTextFormat(Qt::PlainText);
  setObjectName(u"notice"_s);
  setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  m_timer.setSingleShot(true);
  m_timer.setInterval(8s);
  connect(&m_timer, &QTimer::timeout, this, &NoticeBar::dismiss);
  applyColors();
  hide();
}

QString NoticeBar::text() const {
  return m_fullText;
}

void NoticeBar::show(const QString& text, const QList<Action>& actions) {
  // Not at once: it may be one of them that is being clicked.
  for (QToolButton* button : std::exchange(m_buttons, {})) {
    button->hide();
    button->deleteLater();
  }
  for (const Action& action : actions) {
    auto* button = new QToolButton(this);
    button->setText(action.title);
    button->setFont(textFont(13, QFont::DemiBold));
    connect(button, &QToolButton::clicked, this, [this, act = action.act] {
      dismiss();
      act();
    });
    layout()->addWidget(button);
    m_buttons << button;
  }
  setText(text);
  applyColors();
  setVisible(true);
  m_timer.stop();
  if (actions.isEmpty()) m_timer.start();
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&event);
}

void NoticeBar::setText(const QString& text) {
  m_fullText = text;
  // Of a path with a reason, both ends say most.
  const int room = std::max(shortestText, (parentWidget() ? parentWidget()->width() : 0) - roomForOthers -
                                              static_cast<int>(m_buttons.size()) * roomForButton);
  m_text->setText(m_text->fontMetrics().elidedText(text, Qt::ElideMiddle, room));
  m_text->setToolTip(m_text->text() == text ? QString() : text);
  setAccessibleName(text);
}

void NoticeBar::dismiss() {
  m_timer.stop();
  hide();
}

void NoticeBar::applyColors() {
  const JournalColors colors = JournalColors::current();
  // A style sheet that is set is a change of the palette, too.
  if (colors == m_colors) return;
  m_colors = colors;
  setStyleSheet(
      u"#notice { border-radius: 5px; background: %1 }"
      "#notice QLabel { color: %2 }"
      "#notice QToolButton { border: 1px solid transparent; border-radius: 3px; padding: 1px 3px; color: %3 }"
      "#notice QToolButton:hover { text-decoration: underline }"
      "#notice QToolButton:focus { border-color: %3 }"_s.arg(blended(colors.accent, colors.paper, 0.14).name(),
                                                             colors.text.name(), colors.accent.name()));
}

}  // namespace quillo
