#include "journal/views/TimelineView.h"

#include "controls/look/JournalColors.h"
#include "journal/model/TimelineSource.h"
#include "journal/views/AccessibleTimeline.h"
#include "journal/views/TimelineRowPainter.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Of this year without the year: it is the usual case, and shorter.
QString titleOfDay(QDate day, const QLocale& locale) {
  if (!day.isValid()) return u"WITHOUT A DATE"_s;
  QString format = locale.dateFormat(QLocale::LongFormat);
  if (day.year() == QDate::currentDate().year()) {
    // "dddd, d MMMM yyyy", "dddd, MMMM d, yyyy", "yyyy年M月d日dddd": the year with what parts it from the rest.
    static const QRegularExpression year(u"[,\\s]*('de' |'del' )?yyyy[年\\s]*('г'\\.?)?"_s);
    format.replace(year, QString());
  }
  return locale.toUpper(locale.toString(day, format));
}

}  // namespace

TimelineView::TimelineView(TimelineSource& source, QWidget* parent) : QAbstractScrollArea(parent), m_source(source) {
  AccessibleTimeline::install();
  setFrameStyle(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setAccessibleName(u"Entries"_s);
  connect(&m_source, &TimelineSource::didReset, this, &TimelineView::reload);
  connect(&m_source, &TimelineSource::rowsDidArrive, this, &TimelineView::rowsDidArrive);
  reload(/*isOther=*/true);
}

void TimelineView::reload(bool isOther) {
  m_rows = TimelineLayout(m_source.days(), TimelineRowPainter::headingHeight, TimelineRowPainter::rowHeight);
  m_selected.clear();
  // A row that was chosen before it had been read is still meant.
  const bool isAwaited = m_current >= 0 && m_currentIdentifier.isEmpty() && !isOther;
  if (!isAwaited) m_current = m_currentIdentifier.isEmpty() ? -1 : m_source.rowOfEntry(m_currentIdentifier);
  if (m_current >= m_rows.rowCount()) m_current = -1;
  if (m_current >= 0) m_selected = {m_current};
  m_anchor = m_current;
  updateScrollBar();
  if (isOther) verticalScrollBar()->setValue(0);
  AccessibleTimeline::rowsDidChange(*this);
  follow();
  viewport()->update();
  if (isAwaited && entryAt(m_current)) setCurrent(m_current);
}

void TimelineView::rowsDidArrive(int first, int last) {
  if (m_current < 0 && !m_currentIdentifier.isEmpty()) {
    m_current = m_source.rowOfEntry(m_currentIdentifier);
    if (m_current >= 0) m_selected = {m_current};
    m_anchor = m_current;
  } else if (m_current >= first && m_current <= last && m_currentIdentifier.isEmpty()) {
    setCurrent(m_current);
  }
  follow();
  viewport()->update();
}

void TimelineView::followCurrentEntry(QDate day) {
  m_followedDay = day;
  m_hasGoneThere = false;
  follow();
}

void TimelineView::follow() {
  if (!m_followedDay.isValid()) return;
  if (m_current >= 0) {
    if (m_rows.dayOfRow(m_current) != m_followedDay) return;
    m_followedDay = {};
    return scrollTo(m_current);
  }
  // Rows are read when they are in view, and may take a moment. Once: it may be that the list is not to have it.
  const int row = m_rows.firstRowOfDay(m_followedDay);
  if (row >= 0 && !std::exchange(m_hasGoneThere, true)) verticalScrollBar()->setValue(m_rows.rowWithHeading(row).top);
}

const TimelineRow* TimelineView::entryAt(int row) const {
  return row < 0 || row >= m_rows.rowCount() ? nullptr : m_source.row(row);
}

QRect TimelineView::rowRect(int row) const {
  const auto place = m_rows.row(row);
  return {0, place.top - verticalScrollBar()->value(), viewport()->width(), place.height};
}

int TimelineView::rowAt(QPoint inViewport) const {
  return m_rows.rowAt(inViewport.y() + verticalScrollBar()->value());
}

void TimelineView::updateScrollBar() {
  verticalScrollBar()->setRange(0, std::max(0, m_rows.height() - viewport()->height()));
  verticalScrollBar()->setPageStep(viewport()->height());
  verticalScrollBar()->setSingleStep(TimelineRowPainter::rowHeight / 2);
}

void TimelineView::resizeEvent(QResizeEvent*) {
  updateScrollBar();
}

void TimelineView::scrollTo(int row) {
  const auto place = m_rows.rowWithHeading(row);
  const int top = verticalScrollBar()->value();
  const int room = viewport()->height();
  if (place.top < top)
    verticalScrollBar()->setValue(place.top);
  else if (place.top + place.height > top + room)
    verticalScrollBar()->setValue(place.top + place.height - room);
}

void TimelineView::setCurrent(int row) {
  const int before = m_current;
  m_current = row;
  const TimelineRow* entry = entryAt(row);
  const QString identifier = entry ? entry->identifier : QString();
  AccessibleTimeline::currentDidMove(*this, before, row);
  viewport()->update();
  if (identifier == m_currentIdentifier) return;
  m_currentIdentifier = identifier;
  m_followedDay = {};
  Q_EMIT currentEntryChanged(identifier);
}

void TimelineView::setCurrentRow(int row) {
  m_anchor = row;
  m_selected.clear();
  if (row >= 0) m_selected.insert(row);
  setCurrent(row);
  if (row >= 0) scrollTo(row);
}

void TimelineView::setCurrentEntry(const QString& identifier) {
  const int row = m_source.rowOfEntry(identifier);
  if (row >= 0) return setCurrentRow(row);
  m_selected.clear();
  m_current = -1;
  m_anchor = -1;
  m_currentIdentifier = identifier;
  viewport()->update();
}

QStringList TimelineView::selectedIdentifiers() const {
  QList<int> rows(m_selected.begin(), m_selected.end());
  std::sort(rows.begin(), rows.end());
  QStringList identifiers;
  for (const int row : std::as_const(rows))
    if (const TimelineRow* entry = entryAt(row)) identifiers << entry->identifier;
  return identifiers;
}

void TimelineView::showDay(QDate day) {
  if (const int row = m_rows.firstRowOfDay(day); row >= 0) {
    setCurrentRow(row);
    verticalScrollBar()->setValue(m_rows.rowWithHeading(row).top);
  }
}

void TimelineView::choose(int row, Qt::KeyboardModifiers modifiers) {
  if (row < 0 || row >= m_rows.rowCount()) return;
  if ((modifiers & Qt::ShiftModifier) && m_anchor >= 0) {
    m_selected.clear();
    for (int i = std::min(row, m_anchor); i <= std::max(row, m_anchor); ++i) m_selected.insert(i);
  } else if (modifiers & Qt::ControlModifier) {
    if (!m_selected.remove(row)) m_selected.insert(row);
    m_anchor = row;
  } else {
    m_selected = {row};
    m_anchor = row;
  }
  setCurrent(row);
  scrollTo(row);
}

void TimelineView::mousePressEvent(QMouseEvent* event) {
  const int row = rowAt(event->position().toPoint());
  // The right button's menu is about what is chosen already, if it is there.
  if (event->button() == Qt::RightButton && m_selected.contains(row)) return;
  if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton) choose(row, event->modifiers());
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && !m_currentIdentifier.isEmpty()) Q_EMIT entryActivated(m_currentIdentifier);
}

void TimelineView::contextMenuEvent(QContextMenuEvent* event) {
  if (m_selected.isEmpty()) return;
  const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
  Q_EMIT contextMenuWanted(byKey ? viewport()->mapToGlobal(rowRect(m_current).center()) : event->globalPos());
}

int TimelineView::rowForKey(int key) const {
  const int page = std::max(1, viewport()->height() / TimelineRowPainter::rowHeight - 1);
  const int last = m_rows.rowCount() - 1;
  switch (key) {
    case Qt::Key_Up:
      return std::max(0, m_current - 1);
    case Qt::Key_Down:
      return std::min(last, m_current + 1);
    case Qt::Key_PageUp:
      return std::max(0, m_current - page);
    case Qt::Key_PageDown:
      return std::min(last, m_current + page);
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return last;
    default:
      return -1;
  }
}

void TimelineView::keyPressEvent(QKeyEvent* event) {
  if (m_rows.rowCount() == 0) return QAbstractScrollArea::keyPressEvent(event);
  if (event->matches(QKeySequence::SelectAll)) {
    for (int row = 0; row < m_rows.rowCount(); ++row) m_selected.insert(row);
    viewport()->update();
    return;
  }
  if (event->key() == Qt::Key_Delete && !m_selected.isEmpty()) {
    Q_EMIT deletionWanted();
    return;
  }
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && !m_currentIdentifier.isEmpty()) {
    Q_EMIT entryActivated(m_currentIdentifier);
    return;
  }
  const int row = rowForKey(event->key());
  if (row < 0) return QAbstractScrollArea::keyPressEvent(event);
  choose(row, event->modifiers() & Qt::ShiftModifier);
}

void TimelineView::focusInEvent(QFocusEvent* event) {
  if (m_current < 0 && m_currentIdentifier.isEmpty() && m_rows.rowCount() > 0 &&
      event->reason() != Qt::MouseFocusReason)
    setCurrentRow(0);
  viewport()->update();
}

void TimelineView::focusOutEvent(QFocusEvent*) {
  viewport()->update();
}

void TimelineView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::LocaleChange) viewport()->update();
  QAbstractScrollArea::changeEvent(event);
}

bool TimelineView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
  // What does not fit into a row.
  const auto* help = static_cast<QHelpEvent*>(event);
  const TimelineRow* entry = entryAt(rowAt(help->pos()));
  QToolTip::showText(help->globalPos(), entry ? entry->damage : QString(), viewport());
  return true;
}

void TimelineView::paintEvent(QPaintEvent* event) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(viewport());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(event->rect(), colors.list);
  const int scrolled = verticalScrollBar()->value();
  const int top = scrolled + event->rect().top();
  const int bottom = scrolled + event->rect().bottom();
  TimelineRowPainter rows(painter, colors, layoutDirection() == Qt::RightToLeft);
  const qsizetype firstDay = m_rows.dayIndexAt(top);
  // No further than to the lower edge: as many as fit on a screen.
  for (qsizetype day = std::max<qsizetype>(0, firstDay); day < m_rows.days().size(); ++day) {
    const auto heading = m_rows.heading(day);
    if (heading.top > bottom) break;
    rows.paintHeading(QRect(0, heading.top - scrolled, viewport()->width(), heading.height),
                      titleOfDay(m_rows.days()[day].day, locale()), day > 0);
    const int belowHeading = heading.top + heading.height;
    const int count = m_rows.days()[day].count;
    const int first = m_rows.rowAt(belowHeading);
    const int skipped = std::max(0, (top - belowHeading) / TimelineRowPainter::rowHeight);
    for (int row = first + skipped; row < first + count && m_rows.row(row).top <= bottom; ++row) {
      if (const TimelineRow* entry = m_source.row(row))
        rows.paintRow(rowRect(row), *entry, m_rows.days()[day].day, m_selected.contains(row), hasFocus());
      else
        rows.paintPlaceholder(rowRect(row));
    }
  }
}

}  // namespace quillo
