#pragma once

#include <QDate>
#include <QHash>
#include <QWidget>

class QLabel;
class QPushButton;

namespace quillo {

class YearHeatMap;

// A year at a glance: its days by how much was written, with totals and the longest run of days.
class YearPage : public QWidget {
  Q_OBJECT

 public:
  explicit YearPage(QWidget* parent = nullptr);

  [[nodiscard]] int year() const;
  void showYear(int year);
  // Of the whole journal.
  void setEntriesByDay(const QHash<QDate, int>& entries, QDate today);

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  void dayActivated(QDate day);
  // With any day of it.
  void yearActivated(QDate day);

 private:
  void refresh();

  QLabel* m_title;
  QLabel* m_totals;
  QPushButton* m_previous;
  QPushButton* m_next;
  QPushButton* m_entriesButton;
  YearHeatMap* m_map;
  QHash<QDate, int> m_entries;
  QDate m_today;
};

}  // namespace quillo
