#pragma once

#include <QSplitter>

namespace quillo {

// Sidebar, list and paper side by side, as many as there is room for: without the sidebar below 700 points, one at a
// time below 480. What is folded away comes in front when it is asked for. The borders can be dragged.
class FoldingColumns : public QSplitter {
  Q_OBJECT

 public:
  enum class Column { Sidebar, List, Paper };

  // Takes the widgets.
  FoldingColumns(QWidget* sidebar, QWidget* list, QWidget* paper, QWidget* parent = nullptr);

  // What the person wants to see where there is room for it. The paper always shows.
  void setWanted(Column column, bool isWanted);
  [[nodiscard]] bool isWanted(Column column) const;
  // Brings a column into view, whatever is folded.
  void bringToFront(Column column);
  [[nodiscard]] Column front() const { return m_front; }
  // 1 to 3.
  [[nodiscard]] int columnCount() const { return m_columnCount; }
  [[nodiscard]] bool shows(Column column) const;

  // Widths as they are where all three show, and what is wanted: to be kept from run to run.
  [[nodiscard]] QByteArray state() const;
  void restore(const QByteArray& state);

 Q_SIGNALS:
  // Other columns show now, or in other places.
  void arranged();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void arrange();

  QWidget* m_columns[3];
  bool m_wanted[3]{true, true, true};
  QList<int> m_widths;  // of sidebar and list
  int m_columnCount{3};
  Column m_front{Column::List};
};

}  // namespace quillo
