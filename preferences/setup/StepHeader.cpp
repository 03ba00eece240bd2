#include "preferences/setup/StepHeader.h"

#include "controls/Fonts.h"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

namespace quillo {

namespace {

// In points.
constexpr int side = 40;
constexpr int quillTop = 26;
constexpr double quillScale = 1.4;  // of a drawing of 22 points
constexpr int quillSpace = 64;

const QColor titleColor(0xffffff);
const QColor aboutColor(0xb9bec6);

void setLook(QLabel& label, const QFont& font, const QColor& color) {
  label.setFont(font);
  label.setTextFormat(Qt::PlainText);
  label.setWordWrap(true);
  // As a rule of its own, since the window's says what labels look like.
  label.setStyleSheet(QStringLiteral("color: ") + color.name());
}

}  // namespace

StepHeader::StepHeader(QWidget* parent) : QWidget(parent), m_title(new QLabel(this)), m_about(new QLabel(this)) {
  setLook(*m_title, textFont(22, QFont::Bold), titleColor);
  setLook(*m_about, textFont(13), aboutColor);
  m_title->setObjectName(QStringLiteral("stepTitle"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(side, quillTop + quillSpace - 22, side, 22);
  column->setSpacing(5);
  column->addWidget(m_title);
  column->addWidget(m_about);
}

void StepHeader::setTexts(const QString& title, const QString& about) {
  m_title->setText(title);
  m_about->setText(about);
  // No higher than its lines, so that what is below has the room.
  setFixedHeight(layout()->heightForWidth(parentWidget()->width()));
}

QString StepHeader::title() const {
  return m_title->text();
}

void StepHeader::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QLinearGradient slate(0, 0, 0, height());
  slate.setColorAt(0, QColor(0x3a3e45));
  slate.setColorAt(1, QColor(0x2a2d33));
  painter.fillRect(rect(), slate);

  // The quill of the icon, by its outline.
  QPainterPath feather(QPointF(19, 2.4));
  feather.cubicTo(19, 8.8, 15.9, 14.9, 8, 16.1);
  feather.lineTo(5.2, 19.6);
  feather.lineTo(3, 19.6);
  feather.cubicTo(3.4, 12.4, 8, 3.4, 19, 2.4);
  feather.closeSubpath();
  QPainterPath shaft(QPointF(5.4, 17.2));
  shaft.cubicTo(7.4, 12.9, 10.3, 9.3, 14.3, 6.6);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(side - 3 * quillScale, quillTop);
  painter.scale(quillScale, quillScale);
  QPen pen(titleColor, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  painter.strokePath(feather, pen);
  pen.setWidthF(1.1);
  painter.strokePath(shaft, pen);
}

}  // namespace quillo
