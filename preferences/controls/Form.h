#pragma once

#include "preferences/controls/FormRow.h"

#include <QWidget>

class QGridLayout;

namespace quillo {

// Rows of fields whose labels stand right-aligned in one column at their left.
class Form : public QWidget {
  Q_OBJECT

 public:
  explicit Form(QWidget* parent = nullptr);

  // Takes the fields over. The label names the first field for assistive technology, too, unless that has a text of
  // its own; without a label the row stands under the fields above it.
  FormRow* addRow(const QString& label, std::initializer_list<QWidget*> fields);
  // Over both columns.
  void addWide(QWidget* widget);
  // Of the labels, in points; for windows that are narrower than the preferences.
  void setLabelWidth(int width);
  // With its label.
  void setRowVisible(const FormRow& row, bool isVisible);
  void setRowLabel(const FormRow& row, const QString& label);

 private:
  [[nodiscard]] QLabel* labelOf(const FormRow& row) const;

  QGridLayout* m_grid;
};

}  // namespace quillo
