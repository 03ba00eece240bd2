#pragma once

#include <QDate>
#include <QSet>
#include <QWidget>

namespace quillo {

// A month of the calendar with a dot on each day that has entries. A click or the keyboard chooses a day: arrows move
// by days and weeks, Page Up and Down by months, Home goes to today, Return chooses. A click on the name of the month,
// or the year, chooses that, and so do the keys M and Y. Colours are those of the palette (JournalColors); names and
// the first day of the week are the locale's.
class MonthView : public QWidget {
  Q_OBJECT

 public:
  explicit MonthView(QWidget* parent = nullptr);

  // The first day of the month that is shown.
  [[nodiscard]] QDate month() const { return m_month; }
  void showMonth(QDate day);
  // Of the shown month, or of any; others are not looked at.
  void setMarkedDays(const QSet<QDate>& days);
  // The day that the window is about; invalid for none.
  void setSelectedDay(QDate day);
  void setToday(QDate day);
  // Where the keyboard is, or the day that the window is about.
  [[nodiscard]] QDate currentDay() const { return m_cursor; }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 Q_SIGNALS:
  void monthShown(QDate firstDay);
  void dayActivated(QDate day);
  // With any day of it.
  void monthActivated(QDate day);
  void yearActivated(QDate day);
  void contextMenuWanted(QDate day, QPoint globalPosition);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;

 private:
  enum class Target { None, Previous, Next, Month, Year, Day };
  struct Hit {
    Target target{Target::None};
    QDate day;
  };
  [[nodiscard]] Hit hitAt(QPointF point) const;
  [[nodiscard]] QRectF chevronRect(bool next) const;
  [[nodiscard]] QRectF titleRect(bool ofYear) const;
  [[nodiscard]] QRectF cellRect(QDate day) const;
  [[nodiscard]] int column(QDate day) const;
  [[nodiscard]] QString nameOfDay(QDate day) const;
  void paintDay(QPainter& painter, QDate day) const;
  void moveCursor(QDate day);
  void tellName();

  QDate m_month;
  QDate m_selected;
  QDate m_today;
  QDate m_cursor;  // where the keyboard is
  QSet<QDate> m_marked;
};

}  // namespace quillo
