#pragma once

#include <QDate>
#include <QHash>
#include <QWidget>

namespace quillo {

// A year as a grid of days, a column a week, each the darker the more was written. A click or the keyboard chooses a
// day: arrows move, Return chooses. In the width that it gets; `isLabelled` adds months and weekdays.
class YearHeatMap : public QWidget {
  Q_OBJECT

 public:
  explicit YearHeatMap(bool isLabelled, QWidget* parent = nullptr);

  [[nodiscard]] int year() const { return m_year; }
  void setYear(int year);
  // How much was written on a day, in whatever `unit` says ("entries", "words"); days of other years are not looked at.
  void setAmounts(const QHash<QDate, int>& amounts, const QString& unit);

  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override;
  [[nodiscard]] QSize sizeHint() const override;

 Q_SIGNALS:
  void dayActivated(QDate day);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] double step(int width) const;  // from a cell to the next, in points
  [[nodiscard]] QRectF cellRect(QDate day) const;
  [[nodiscard]] QDate dayAt(QPointF point) const;
  [[nodiscard]] QString nameOfDay(QDate day) const;
  [[nodiscard]] double level(QDate day) const;
  void paintLabels(QPainter& painter) const;
  void moveCursor(QDate day);

  bool m_isLabelled;
  int m_year;
  QDate m_cursor;
  QHash<QDate, int> m_amounts;
  int m_much{1};  // of the days that are darkest
  QString m_unit;
};

}  // namespace quillo
