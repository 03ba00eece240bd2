#include "journal/model/TimelineLayout.h"

#include <algorithm>
#include <utility>

namespace quillo {

TimelineLayout::TimelineLayout(QList<TimelineDay> days, int headingHeight, int rowHeight)
    : m_days(std::move(days)), m_headingHeight(headingHeight), m_rowHeight(rowHeight) {
  m_firstRows.reserve(static_cast<size_t>(m_days.size()) + 1);
  m_tops.reserve(static_cast<size_t>(m_days.size()) + 1);
  for (const TimelineDay& day : std::as_const(m_days)) {
    m_rowCount += day.count;
    m_height += m_headingHeight + day.count * m_rowHeight;
    m_firstRows.push_back(m_rowCount);
    m_tops.push_back(m_height);
  }
}

qsizetype TimelineLayout::dayIndexOfRow(int row) const {
  return std::upper_bound(m_firstRows.begin(), m_firstRows.end(), row) - m_firstRows.begin() - 1;
}

TimelineLayout::Place TimelineLayout::heading(qsizetype day) const {
  return {m_tops[static_cast<size_t>(day)], m_headingHeight};
}

TimelineLayout::Place TimelineLayout::row(int row) const {
  const auto day = static_cast<size_t>(dayIndexOfRow(row));
  return {m_tops[day] + m_headingHeight + (row - m_firstRows[day]) * m_rowHeight, m_rowHeight};
}

TimelineLayout::Place TimelineLayout::rowWithHeading(int row) const {
  Place place = this->row(row);
  if (row != m_firstRows[static_cast<size_t>(dayIndexOfRow(row))]) return place;
  place.top -= m_headingHeight;
  place.height += m_headingHeight;
  return place;
}

QDate TimelineLayout::dayOfRow(int row) const {
  return row < 0 || row >= m_rowCount ? QDate() : m_days[dayIndexOfRow(row)].day;
}

int TimelineLayout::firstRowOfDay(QDate day) const {
  const auto found =
      std::find_if(m_days.begin(), m_days.end(), [day](const TimelineDay& other) { return other.day == day; });
  return found == m_days.end() ? -1 : m_firstRows[static_cast<size_t>(found - m_days.begin())];
}

qsizetype TimelineLayout::dayIndexAt(int y) const {
  if (m_days.isEmpty()) return -1;
  const auto above = std::upper_bound(m_tops.begin(), m_tops.end(), y) - m_tops.begin() - 1;
  return std::clamp<qsizetype>(above, 0, m_days.size() - 1);
}

int TimelineLayout::rowAt(int y) const {
  const qsizetype day = dayIndexAt(y);
  if (day < 0 || y < 0 || y >= m_height) return -1;
  const int below = y - m_tops[static_cast<size_t>(day)] - m_headingHeight;
  return below < 0 ? -1 : m_firstRows[static_cast<size_t>(day)] + below / m_rowHeight;
}

}  // namespace quillo
