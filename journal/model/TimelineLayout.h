#pragma once

#include <QDate>
#include <QList>

#include <vector>

namespace quillo {

// A day of the timeline and how many entries it has there.
struct TimelineDay {
  QDate day;  // invalid for entries whose date is not known
  int count{0};

  bool operator==(const TimelineDay&) const = default;
};

// Where days and entries lie in a list that is grouped by day: each day has a heading, and then its entries, all
// equally high. In points from the top; rows are counted through all days. A search, not a walk, finds what lies at a
// place.
class TimelineLayout {
 public:
  struct Place {
    int top{0};
    int height{0};
  };

  TimelineLayout() = default;
  TimelineLayout(QList<TimelineDay> days, int headingHeight, int rowHeight);

  [[nodiscard]] int rowCount() const { return m_rowCount; }
  [[nodiscard]] int height() const { return m_height; }
  [[nodiscard]] const QList<TimelineDay>& days() const { return m_days; }

  [[nodiscard]] Place row(int row) const;
  // With the heading in front where it is the first of its day.
  [[nodiscard]] Place rowWithHeading(int row) const;
  [[nodiscard]] Place heading(qsizetype day) const;
  [[nodiscard]] QDate dayOfRow(int row) const;
  // -1 for a day without entries.
  [[nodiscard]] int firstRowOfDay(QDate day) const;
  // The row at a place; -1 on a heading and beyond the end.
  [[nodiscard]] int rowAt(int y) const;
  // The index of the day whose heading or rows are at a place, or the nearest; -1 where there are no days.
  [[nodiscard]] qsizetype dayIndexAt(int y) const;

 private:
  [[nodiscard]] qsizetype dayIndexOfRow(int row) const;

  QList<TimelineDay> m_days;
  int m_headingHeight{0};
  int m_rowHeight{0};
  // One more than days: the last is the end.
  std::vector<int> m_firstRows{0};
  std::vector<int> m_tops{0};
  int m_rowCount{0};
  int m_height{0};
};

}  // namespace quillo
