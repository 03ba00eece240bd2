#include "controls/Button.h"

#include <QEvent>
#include <QFocusEvent>

namespace quillo {

using namespace Qt::StringLiterals;

Button::Button(QWidget* parent) : QAbstractButton(parent) {
  setFocusPolicy(Qt::TabFocus);
  setButtonCell(std::make_unique<ButtonCell>());
  connect(this, &QAbstractButton::pressed, this, [this] { m_cell->setHighlighted(true); });
  connect(this, &QAbstractButton::released, this, [this] { m_cell->setHighlighted(false); });
  connect(this, &QAbstractButton::toggled, this,
          [this](bool checked) { m_cell->setState(checked ? CellState::On : CellState::Off); });
}

Button::~Button() = default;

void Button::setButtonCell(std::unique_ptr<ButtonCell> cell) {
  if (!cell) return;
  const QString title = m_cell ? m_cell->title() : QString();
  m_cell = std::move(cell);
  m_cell->setDisplayHandler([this] { cellNeedsDisplay(); });
  m_cell->setClickHandler([this] { click(); });
  if (!title.isEmpty() && m_cell->title().isEmpty()) m_cell->setTitle(title);
  m_cell->setState(isChecked() ? CellState::On : CellState::Off);
  if (!isEnabled()) m_cell->setEnabled(false);
  m_cell->setHighlighted(isDown());
  setPlainText(m_cell->title());
  updateGeometry();
  cellNeedsDisplay();
}

void Button::cellNeedsDisplay() {
  m_drawing.invalidate();
  update();
}

QString Button::title() const {
  return m_cell->title();
}

void Button::setTitle(const QString& title) {
  m_cell->setTitle(title);
  setPlainText(title);
  updateGeometry();
}

void Button::setPlainText(const QString& title) {
  // For screen readers and whoever knows only the base. An ampersand is a letter here, not a short cut.
  QString text = title;
  QAbstractButton::setText(text.replace(u'&', u"&&"_s));
}

void Button::setImageName(const QString& name) {
  m_imageName = name;
  m_cell->setImage(Image::imageNamed(name));
  updateGeometry();
}

QSize Button::sizeHint() const {
  return m_cell->cellSize().toSize();
}

void Button::paintEvent(QPaintEvent* /*event*/) {
  m_drawing.paint(*this, [this](QPainter& painter) { m_cell->drawWithFrame(painter, rect(), this); });
  if (m_showsFocusRing && hasFocus()) drawFocusRing();
}

void Button::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange) m_cell->setEnabled(isEnabled());
  QAbstractButton::changeEvent(event);
}

// Whether the button stays the one with the focus: a menu or another window has the keyboard meanwhile.
static bool isForAWhile(const QFocusEvent& event) {
  return event.reason() == Qt::PopupFocusReason || event.reason() == Qt::ActiveWindowFocusReason;
}

void Button::focusInEvent(QFocusEvent* event) {
  // Only for whoever walks through the window with the keyboard.
  if (!isForAWhile(*event))
    m_showsFocusRing = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
  QAbstractButton::focusInEvent(event);
}

void Button::focusOutEvent(QFocusEvent* event) {
  if (!isForAWhile(*event)) m_showsFocusRing = false;
  QAbstractButton::focusOutEvent(event);
}

void Button::drawFocusRing() {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  const QRectF ring = m_cell->focusRingRectForBounds(rect()).adjusted(2, 2, -2, -2);
  // A pale line with dark edges shows on light grounds as well as on dark ones.
  for (const QPen& pen : {QPen(QColor(0x12, 0x4f, 0x96), 4), QPen(QColor(0x8f, 0xc3, 0xff), 2)}) {
    painter.setPen(pen);
    painter.drawRoundedRect(ring, 4.5, 4.5);
  }
}

}  // namespace quillo
