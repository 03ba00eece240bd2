#include "journal/views/SearchField.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QToolButton>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr int fieldHeight = 32;
constexpr int glassWidth = 32;

}  // namespace

SearchField::SearchField(QWidget* parent)
    : QFrame(parent), m_chipRow(new QHBoxLayout), m_edit(new QLineEdit(this)), m_status(new QLabel(this)) {
  setFixedHeight(fieldHeight);
  setFocusProxy(m_edit);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(glassWidth, 0, 10, 0);
  row->setSpacing(6);
  m_chipRow->setSpacing(4);
  row->addLayout(m_chipRow);
  row->addWidget(m_edit, 1);
  row->addWidget(m_status);

  m_edit->setObjectName(u"searchWords"_s);
  m_edit->setFrame(false);
  m_edit->setFont(textFont(14));
  m_edit->setPlaceholderText(u"Search"_s);
  m_edit->setAccessibleName(u"Search the journal"_s);
  m_edit->installEventFilter(this);
  m_status->setFont(textFont(13));
  connect(m_edit, &QLineEdit::textChanged, this, &SearchField::wordsChanged);
  applyColors();
}

QString SearchField::words() const {
  return m_edit->text();
}

void SearchField::setWords(const QString& words) {
  m_edit->setText(words);
}

void SearchField::setChips(const QStringList& chips) {
  // Not at once: it may be the click on one of them that changes them.
  for (QToolButton* chip : std::exchange(m_chips, {})) {
    chip->hide();
    chip->deleteLater();
  }
  for (const QString& chip : chips) {
    auto* button = new QToolButton(this);
    const auto index = static_cast<int>(m_chips.size());
    button->setText(chip + u"  \u2715"_s);
    button->setFont(textFont(13));
    button->setAccessibleName(u"Filter "_s + chip + u", remove"_s);
    button->setCursor(Qt::ArrowCursor);
    connect(button, &QToolButton::clicked, this, [this, index] { Q_EMIT chipRemoved(index); });
    m_chipRow->addWidget(button);
    m_chips << button;
  }
  applyColors();
}

void SearchField::setStatus(const QString& text, bool isProblem) {
  m_isProblem = isProblem;
  m_status->setText(text);
  m_status->setToolTip(isProblem ? text : QString());
  applyColors();
}

void SearchField::beginSearch() {
  m_edit->setFocus(Qt::ShortcutFocusReason);
  m_edit->selectAll();
}

void SearchField::applyColors() {
  const JournalColors colors = JournalColors::current();
  QPalette own = palette();
  own.setColor(QPalette::Text, colors.text);
  own.setColor(QPalette::PlaceholderText, colors.dim);
  m_edit->setPalette(own);
  own.setColor(QPalette::WindowText, m_isProblem ? blended(QColor(0xd0402f), colors.text, 0.7) : colors.dim);
  m_status->setPalette(own);
  const QString style =
      u"QToolButton { border: 1px solid transparent; border-radius: 4px; padding: 2px 5px; color: %1; background: %2 }"
      "QToolButton:focus { border-color: %1 }"_s.arg(colors.accent.name(),
                                                     blended(colors.accent, colors.paper, 0.14).name());
  for (QToolButton* chip : m_chips) chip->setStyleSheet(style);
  update();
}

void SearchField::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool hasKeyboard = m_edit->hasFocus();
  painter.setPen(QPen(hasKeyboard ? colors.accent : colors.line, hasKeyboard ? 2 : 1));
  painter.setBrush(colors.paper);
  const double inset = hasKeyboard ? 1 : 0.5;
  painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), 6, 6);

  const double x = layoutDirection() == Qt::RightToLeft ? width() - glassWidth + 6 : 10;
  painter.setPen(QPen(colors.dim, 1.5, Qt::SolidLine, Qt::RoundCap));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPointF(x + 6, fieldHeight / 2.0 - 1.5), 4.5, 4.5);
  painter.drawLine(QPointF(x + 9.4, fieldHeight / 2.0 + 1.9), QPointF(x + 13, fieldHeight / 2.0 + 5.5));
}

bool SearchField::eventFilter(QObject* watched, QEvent* event) {
  if (watched != m_edit) return QFrame::eventFilter(watched, event);
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  if (event->type() != QEvent::KeyPress) return false;
  const int key = static_cast<QKeyEvent*>(event)->key();
  if (key == Qt::Key_Escape) {
    Q_EMIT cleared();
    return true;
  }
  if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Down) {
    Q_EMIT leftForResults();
    return true;
  }
  const bool isAtBeginning = m_edit->cursorPosition() == 0 && !m_edit->hasSelectedText();
  if (key != Qt::Key_Backspace || !isAtBeginning || m_chips.isEmpty()) return false;
  Q_EMIT chipRemoved(static_cast<int>(m_chips.size()) - 1);
  return true;
}

}  // namespace quillo
