#include "preferences/controls/ChoiceCard.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QPainter>
#include <QPushButton>

namespace quillo {

namespace {

// In points.
constexpr int cardHeight = 72;
constexpr int margin = 18;
constexpr int dotSide = 18;
constexpr int textStart = margin + dotSide + 14;
constexpr int titleHeight = 20;
constexpr int explanationHeight = 18;

QFont titleFont() {
  return textFont(14);
}

QFont explanationFont() {
  return textFont(12);
}

}  // namespace

ChoiceCard::ChoiceCard(const QString& title, const QString& explanation, QWidget* parent)
    : QRadioButton(title, parent) {
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setExplanation(explanation);
}

void ChoiceCard::setExplanation(const QString& text) {
  m_explanation = text;
  setAccessibleDescription(text);
  update();
}

QPushButton* ChoiceCard::addButton(const QString& title) {
  m_button = new QPushButton(title, this);
  m_button->setFont(textFont(13));
  placeButton();
  return m_button;
}

QSize ChoiceCard::sizeHint() const {
  const int text = std::max(QFontMetrics(titleFont()).horizontalAdvance(this->text()),
                            QFontMetrics(explanationFont()).horizontalAdvance(m_explanation));
  return {textStart + text + margin + (m_button ? m_button->sizeHint().width() + margin : 0), cardHeight};
}

QSize ChoiceCard::minimumSizeHint() const {
  return {textStart + 160, cardHeight};
}

void ChoiceCard::resizeEvent(QResizeEvent* event) {
  QRadioButton::resizeEvent(event);
  placeButton();
}

// The ground of a card that can be chosen is another under the pointer.
void ChoiceCard::enterEvent(QEnterEvent* event) {
  QRadioButton::enterEvent(event);
  update();
}

void ChoiceCard::leaveEvent(QEvent* event) {
  QRadioButton::leaveEvent(event);
  update();
}

void ChoiceCard::placeButton() {
  if (!m_button) return;
  m_button->ensurePolished();
  const QSize size = m_button->sizeHint();
  const int x = layoutDirection() == Qt::RightToLeft ? margin : width() - margin - size.width();
  m_button->setGeometry({QPoint(x, (height() - size.height()) / 2), size});
}

void ChoiceCard::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) painter.setOpacity(0.5);
  const QRectF card = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
  painter.setPen(isChecked() ? QPen(colors.accent, 2) : QPen(colors.line, 1));
  painter.setBrush(underMouse() && isEnabled() ? colors.paper : colors.list);
  painter.drawRoundedRect(card, 8, 8);
  if (hasFocus()) {
    painter.setPen(QPen(blended(colors.accent, colors.ground, 0.55), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(card.adjusted(3, 3, -3, -3), 6, 6);
  }

  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  const auto placed = [&](const QRectF& r) {
    return isMirrored ? QRectF(width() - r.right(), r.top(), r.width(), r.height()) : r;
  };
  const QRectF dot =
      placed(QRectF(margin, (height() - dotSide) / 2.0, dotSide, dotSide).adjusted(0.5, 0.5, -0.5, -0.5));
  painter.setPen(isChecked() ? QPen(Qt::NoPen) : QPen(blended(colors.dim, colors.line, 0.4), 1));
  painter.setBrush(isChecked() ? colors.accent : colors.paper);
  painter.drawEllipse(dot);
  if (isChecked()) {
    painter.setBrush(colors.accentText);
    painter.drawEllipse(dot.center(), 3, 3);
  }

  const int end = m_button ? m_button->width() + 2 * margin : margin;
  const int top =
      m_explanation.isEmpty() ? (height() - titleHeight) / 2 : (height() - titleHeight - explanationHeight) / 2;
  const int textWidth = width() - textStart - end;
  const Qt::Alignment side = (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
  painter.setFont(titleFont());
  painter.setPen(colors.text);
  painter.drawText(placed(QRectF(textStart, top, textWidth, titleHeight)), int(side) | Qt::TextShowMnemonic,
                   painter.fontMetrics().elidedText(text(), Qt::ElideRight, textWidth, Qt::TextShowMnemonic));
  painter.setFont(explanationFont());
  painter.setPen(colors.dim);
  painter.drawText(placed(QRectF(textStart, top + titleHeight, textWidth, explanationHeight)), int(side),
                   painter.fontMetrics().elidedText(m_explanation, Qt::ElideMiddle, textWidth));
}

}  // namespace quillo
