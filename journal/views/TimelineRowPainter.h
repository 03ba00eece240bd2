#pragma once

#include <QColor>
#include <QDate>
#include <QRect>
#include <QString>

class QPainter;

namespace quillo {

struct JournalColors;
struct TimelineRow;

// How an entry looks in the list: the time at the side, two lines of its text with what was searched for marked, and in
// small type place, weather and tags. One of which there are several versions has two sheets under its time.
class TimelineRowPainter {
 public:
  static constexpr int headingHeight = 38;
  static constexpr int rowHeight = 84;

  TimelineRowPainter(QPainter& painter, const JournalColors& colors, bool isMirrored)
      : m_painter(painter), m_colors(colors), m_isMirrored(isMirrored) {}

  void paintHeading(const QRect& rect, const QString& title, bool hasLine);
  // `headingDay` is the day that it stands under.
  void paintRow(const QRect& rect, const TimelineRow& row, QDate headingDay, bool isSelected, bool hasKeyboard);
  // For one that is not read yet.
  void paintPlaceholder(const QRect& rect);

 private:
  // Answers how many lines it took.
  int paintText(const QRectF& rect, const TimelineRow& row, bool isSelected);
  void paintVersionsSign(const QRectF& rect, bool isSelected);
  void paintDetails(const QRectF& rect, const TimelineRow& row, bool isSelected);
  [[nodiscard]] QRectF mirrored(const QRectF& rect, const QRect& in) const;

  QPainter& m_painter;
  const JournalColors& m_colors;
  bool m_isMirrored;
  QColor m_ground;  // of the row being painted
};

}  // namespace quillo
