#include "journal/views/YearHeatMap.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int weeks = 54;  // that a year can touch
constexpr int weekdays = 7;
// In points, where there are labels.
constexpr double monthsHeight = 18;
constexpr double weekdaysWidth = 34;
constexpr double widestStep = 17;

}  // namespace

YearHeatMap::YearHeatMap(bool isLabelled, QWidget* parent)
    : QWidget(parent), m_isLabelled(isLabelled), m_year(QDate::currentDate().year()), m_cursor(QDate::currentDate()) {
  setFocusPolicy(Qt::StrongFocus);
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  moveCursor(m_cursor);
}

void YearHeatMap::setYear(int year) {
  if (year == m_year) return;
  m_year = year;
  moveCursor(QDate(year, m_cursor.month(), std::min(m_cursor.day(), 28)));
  update();
}

void YearHeatMap::setAmounts(const QHash<QDate, int>& amounts, const QString& unit) {
  m_amounts = amounts;
  m_unit = unit;
  // Dark from the amount that nine of ten days stay below: one very long day would make all others pale.
  std::vector<int> written;
  for (auto it = amounts.begin(); it != amounts.end(); ++it)
    if (it.value() > 0 && it.key().year() == m_year) written.push_back(it.value());
  m_much = 1;
  if (!written.empty()) {
    const auto at = written.begin() + static_cast<std::ptrdiff_t>(written.size() * 9 / 10);
    std::nth_element(written.begin(), at, written.end());
    m_much = std::max(1, *at);
  }
  update();
}

double YearHeatMap::step(int width) const {
  const double room = m_isLabelled ? width - weekdaysWidth : width;
  return std::clamp(room / weeks, 2.0, widestStep);
}

int YearHeatMap::heightForWidth(int width) const {
  return static_cast<int>(std::ceil(weekdays * step(width) + (m_isLabelled ? monthsHeight : 0)));
}

QSize YearHeatMap::sizeHint() const {
  const int width = m_isLabelled ? 800 : 200;
  return {width, heightForWidth(width)};
}

QRectF YearHeatMap::cellRect(QDate day) const {
  const auto row = [this](QDate of) { return (of.dayOfWeek() - locale().firstDayOfWeek() + weekdays) % weekdays; };
  const QDate first(m_year, 1, 1);
  const auto week = (first.daysTo(day) + row(first)) / weekdays;
  const double size = step(width());
  const double x = (m_isLabelled ? weekdaysWidth : 0) + static_cast<double>(week) * size;
  const QRectF rect(x, (m_isLabelled ? monthsHeight : 0) + row(day) * size, size * 0.86, size * 0.86);
  return layoutDirection() == Qt::RightToLeft ? QRectF(width() - rect.right(), rect.y(), rect.width(), rect.height())
                                              : rect;
}

QDate YearHeatMap::dayAt(QPointF point) const {
  for (QDate day(m_year, 1, 1); day.year() == m_year; day = day.addDays(1))
    if (cellRect(day).contains(point)) return day;
  return {};
}

double YearHeatMap::level(QDate day) const {
  const int amount = m_amounts.value(day);
  if (amount <= 0) return 0;
  // Four steps, which an eye can tell apart.
  return std::min(4.0, std::ceil(4.0 * amount / m_much)) / 4;
}

QString YearHeatMap::nameOfDay(QDate day) const {
  if (!day.isValid()) return {};
  return u"%1: %2 %3"_s.arg(locale().toString(day, QLocale::LongFormat), locale().toString(m_amounts.value(day)),
                            m_unit);
}

void YearHeatMap::paintLabels(QPainter& painter) const {
  painter.setPen(JournalColors::current().dim);
  painter.setFont(textFont(11));
  for (int month = 1; month <= 12; ++month) {
    const QRectF cell = cellRect(QDate(m_year, month, 1));
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    painter.drawText(QRectF(isMirrored ? cell.right() - 60 : cell.x(), 0, 60, monthsHeight - 4),
                     (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter,
                     locale().standaloneMonthName(month, QLocale::ShortFormat));
  }
  // Every other weekday: that is enough to find one's way.
  for (int i = 1; i < weekdays; i += 2) {
    const QDate day = QDate(m_year, 3, 1).addDays(i);
    const QRectF cell = cellRect(day);
    const double x = layoutDirection() == Qt::RightToLeft ? width() - weekdaysWidth + 4 : 0;
    painter.drawText(QRectF(x, cell.y() - 3, weekdaysWidth - 4, cell.height() + 6), Qt::AlignLeft | Qt::AlignVCenter,
                     locale().standaloneDayName(day.dayOfWeek(), QLocale::ShortFormat));
  }
}

void YearHeatMap::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (m_isLabelled) paintLabels(painter);
  const QColor empty = blended(colors.text, m_isLabelled ? colors.paper : colors.sidebar, 0.08);
  const double radius = std::min(3.0, step(width()) * 0.18);
  painter.setPen(Qt::NoPen);
  for (QDate day(m_year, 1, 1); day.year() == m_year; day = day.addDays(1)) {
    const double amount = level(day);
    painter.setBrush(amount == 0 ? empty : blended(colors.accent, empty, 0.15 + 0.85 * amount));
    painter.drawRoundedRect(cellRect(day), radius, radius);
  }
  if (!hasFocus()) return;
  painter.setPen(QPen(colors.text, 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(cellRect(m_cursor).adjusted(-1, -1, 1, 1), radius, radius);
}

void YearHeatMap::mousePressEvent(QMouseEvent* event) {
  const QDate day = dayAt(event->position());
  if (event->button() != Qt::LeftButton || !day.isValid()) return;
  moveCursor(day);
  Q_EMIT dayActivated(day);
}

void YearHeatMap::keyPressEvent(QKeyEvent* event) {
  const int week = layoutDirection() == Qt::RightToLeft ? -weekdays : weekdays;
  switch (event->key()) {
    case Qt::Key_Left:
      return moveCursor(m_cursor.addDays(-week));
    case Qt::Key_Right:
      return moveCursor(m_cursor.addDays(week));
    case Qt::Key_Up:
      return moveCursor(m_cursor.addDays(-1));
    case Qt::Key_Down:
      return moveCursor(m_cursor.addDays(1));
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      Q_EMIT dayActivated(m_cursor);
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

// Stays within the year. A screen reader says the day under the keyboard's cursor as the view's name.
void YearHeatMap::moveCursor(QDate day) {
  m_cursor = std::clamp(day, QDate(m_year, 1, 1), QDate(m_year, 12, 31));
  setAccessibleName(u"Year %1, %2"_s.arg(m_year).arg(nameOfDay(m_cursor)));
  update();
}

bool YearHeatMap::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    QToolTip::showText(help->globalPos(), nameOfDay(dayAt(help->pos())), this);
    return true;
  }
  if (event->type() == QEvent::LocaleChange || event->type() == QEvent::PaletteChange) update();
  return QWidget::event(event);
}

}  // namespace quillo
