#include "journal/views/MonthView.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr double titleHeight = 28;
constexpr double titleMargin = 6;
constexpr double weekdayHeight = 22;
constexpr double rowHeight = 26;
constexpr double cellWidth = 28;
constexpr int rows = 6;
constexpr int columns = 7;

}  // namespace

MonthView::MonthView(QWidget* parent) : QWidget(parent), m_today(QDate::currentDate()) {
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  m_cursor = m_today;
  showMonth(m_today);
  tellName();
}

QSize MonthView::sizeHint() const {
  return {qCeil(columns * cellWidth), qCeil(titleHeight + weekdayHeight + rows * rowHeight)};
}

void MonthView::showMonth(QDate day) {
  const QDate first(day.year(), day.month(), 1);
  if (!first.isValid() || first == m_month) return;
  m_month = first;
  update();
  Q_EMIT monthShown(first);
}

void MonthView::setMarkedDays(const QSet<QDate>& days) {
  if (days == m_marked) return;
  m_marked = days;
  update();
}

void MonthView::setSelectedDay(QDate day) {
  if (day == m_selected) return;
  m_selected = day;
  if (day.isValid()) {
    m_cursor = day;
    showMonth(day);
  }
  tellName();
  update();
}

void MonthView::setToday(QDate day) {
  if (day == m_today) return;
  m_today = day;
  update();
}

int MonthView::column(QDate day) const {
  return (day.dayOfWeek() - locale().firstDayOfWeek() + columns) % columns;
}

QRectF MonthView::cellRect(QDate day) const {
  const int row = (day.day() - 1 + column(m_month)) / columns;
  const int place = layoutDirection() == Qt::RightToLeft ? columns - 1 - column(day) : column(day);
  return {place * cellWidth, titleHeight + weekdayHeight + row * rowHeight, cellWidth, rowHeight};
}

QRectF MonthView::chevronRect(bool next) const {
  const double end = columns * cellWidth;
  const QRectF rect(next ? end - 24 : end - 46, 2, 22, 22);
  return layoutDirection() == Qt::RightToLeft ? QRectF(end - rect.right(), rect.y(), 22, 22) : rect;
}

// Of the name of the month, or the year behind it.
QRectF MonthView::titleRect(bool ofYear) const {
  const QFontMetricsF metrics(textFont(14, QFont::DemiBold));
  const double monthWidth = metrics.horizontalAdvance(locale().standaloneMonthName(m_month.month()) + u' ');
  const double start = titleMargin + (ofYear ? monthWidth : 0);
  const double width = ofYear ? metrics.horizontalAdvance(QString::number(m_month.year())) : monthWidth;
  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  return {isMirrored ? columns * cellWidth - start - width : start, 0, width, titleHeight};
}

MonthView::Hit MonthView::hitAt(QPointF point) const {
  if (chevronRect(false).contains(point)) return {Target::Previous, {}};
  if (chevronRect(true).contains(point)) return {Target::Next, {}};
  if (titleRect(/*ofYear=*/false).contains(point)) return {Target::Month, {}};
  if (titleRect(/*ofYear=*/true).contains(point)) return {Target::Year, {}};
  for (QDate day = m_month; day.month() == m_month.month(); day = day.addDays(1))
    if (cellRect(day).contains(point)) return {Target::Day, day};
  return {};
}

QString MonthView::nameOfDay(QDate day) const {
  const QString name = locale().toString(day, QLocale::LongFormat);
  return m_marked.contains(day) ? name + u", has entries"_s : name;
}

void MonthView::paintDay(QPainter& painter, QDate day) const {
  const JournalColors colors = JournalColors::current();
  const QRectF cell = cellRect(day);
  const QRectF box = cell.adjusted(0.5, 0, -0.5, 0);
  const bool isSelected = day == m_selected;
  if (isSelected) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.accent);
    painter.drawRoundedRect(box, 6, 6);
  }
  if (hasFocus() && day == m_cursor) {
    painter.setPen(QPen(isSelected ? colors.text : colors.accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 5, 5);
  }
  const bool isToday = day == m_today;
  painter.setFont(textFont(13, isSelected || isToday ? QFont::DemiBold : QFont::Normal));
  painter.setPen(isSelected ? colors.accentText : isToday ? colors.accent : colors.text);
  painter.drawText(cell.adjusted(0, 0, 0, -5), Qt::AlignCenter, locale().toString(day.day()));
  if (!m_marked.contains(day)) return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(isSelected ? colors.accentText : colors.accent);
  painter.drawEllipse(QPointF(cell.center().x(), cell.bottom() - 5), 2, 2);
}

void MonthView::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(colors.text);
  painter.setFont(textFont(14, QFont::DemiBold));
  for (const bool ofYear : {false, true})
    painter.drawText(titleRect(ofYear).adjusted(0, 0, 1, -2), Qt::AlignVCenter,
                     ofYear ? QString::number(m_month.year()) : locale().standaloneMonthName(m_month.month()));
  painter.setPen(QPen(colors.dim, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  for (const bool next : {false, true}) {
    const QPointF middle = chevronRect(next).center();
    const double tip = next != (layoutDirection() == Qt::RightToLeft) ? 2 : -2;
    painter.drawPolyline(QPolygonF({middle + QPointF(-tip, -4), middle + QPointF(tip, 0), middle + QPointF(-tip, 4)}));
  }
  painter.setPen(colors.dim);
  painter.setFont(textFont(11));
  for (int i = 0; i < columns; ++i) {
    const QDate day = m_month.addDays(i);
    const QRectF cell = cellRect(day);
    painter.drawText(QRectF(cell.x(), titleHeight, cell.width(), weekdayHeight), Qt::AlignCenter,
                     locale().standaloneDayName(day.dayOfWeek(), QLocale::NarrowFormat));
  }
  for (QDate day = m_month; day.month() == m_month.month(); day = day.addDays(1)) paintDay(painter, day);
}

void MonthView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const Hit hit = hitAt(event->position());
  if (hit.target == Target::Previous) showMonth(m_month.addMonths(-1));
  if (hit.target == Target::Next) showMonth(m_month.addMonths(1));
  if (hit.target == Target::Month) Q_EMIT monthActivated(m_month);
  if (hit.target == Target::Year) Q_EMIT yearActivated(m_month);
  if (hit.target != Target::Day) return;
  moveCursor(hit.day);
  Q_EMIT dayActivated(hit.day);
}

void MonthView::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Keyboard) {
    showMonth(m_cursor);
    return Q_EMIT contextMenuWanted(m_cursor, mapToGlobal(cellRect(m_cursor).center().toPoint()));
  }
  if (const Hit hit = hitAt(event->pos()); hit.target == Target::Day)
    Q_EMIT contextMenuWanted(hit.day, event->globalPos());
}

void MonthView::wheelEvent(QWheelEvent* event) {
  // By the month; a finer wheel adds up to that.
  const int steps = event->angleDelta().y();
  if (qAbs(steps) >= 60) showMonth(m_month.addMonths(steps > 0 ? -1 : 1));
  event->accept();
}

void MonthView::keyPressEvent(QKeyEvent* event) {
  const int forward = layoutDirection() == Qt::RightToLeft ? -1 : 1;
  switch (event->key()) {
    case Qt::Key_Left:
      return moveCursor(m_cursor.addDays(-forward));
    case Qt::Key_Right:
      return moveCursor(m_cursor.addDays(forward));
    case Qt::Key_Up:
      return moveCursor(m_cursor.addDays(-columns));
    case Qt::Key_Down:
      return moveCursor(m_cursor.addDays(columns));
    case Qt::Key_PageUp:
      return moveCursor(m_cursor.addMonths(-1));
    case Qt::Key_PageDown:
      return moveCursor(m_cursor.addMonths(1));
    case Qt::Key_Home:
      return moveCursor(m_today);
    case Qt::Key_M:
      return Q_EMIT monthActivated(m_month);
    case Qt::Key_Y:
      return Q_EMIT yearActivated(m_month);
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      Q_EMIT dayActivated(m_cursor);
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void MonthView::moveCursor(QDate day) {
  // The years that a calendar is printed for.
  if (!day.isValid() || day.year() < 1 || day.year() > 9999) return;
  m_cursor = day;
  showMonth(day);
  tellName();
  update();
}

// A screen reader says the day under the keyboard's cursor as the view's name.
void MonthView::tellName() {
  setAccessibleName(u"Calendar, "_s + nameOfDay(m_cursor));
}

bool MonthView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    const Hit hit = hitAt(help->pos());
    QString text;
    if (hit.target == Target::Day) text = nameOfDay(hit.day);
    if (hit.target == Target::Previous) text = u"The month before"_s;
    if (hit.target == Target::Next) text = u"The month after"_s;
    if (hit.target == Target::Month) text = u"All of the month (M)"_s;
    if (hit.target == Target::Year) text = u"All of the year (Y)"_s;
    QToolTip::showText(help->globalPos(), text, this);
    return true;
  }
  if (event->type() == QEvent::LocaleChange || event->type() == QEvent::PaletteChange) update();
  return QWidget::event(event);
}

}  // namespace quillo
