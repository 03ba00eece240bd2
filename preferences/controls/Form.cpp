#include "preferences/controls/Form.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QStyle>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points; labels stand at the height of a field.
constexpr int labelColumn = 118;
constexpr int fieldHeight = 30;

void nameField(QWidget* field, const QString& label) {
  if (!field || !field->accessibleName().isEmpty()) return;
  if (const auto* button = qobject_cast<QAbstractButton*>(field); button && !button->text().isEmpty()) return;
  field->setAccessibleName(QString(label).remove(u'&'));
}

}  // namespace

Form::Form(QWidget* parent) : QWidget(parent), m_grid(new QGridLayout(this)) {
  m_grid->setContentsMargins(0, 0, 0, 0);
  m_grid->setHorizontalSpacing(12);
  m_grid->setVerticalSpacing(10);
  m_grid->setColumnMinimumWidth(0, labelColumn);
  m_grid->setColumnStretch(1, 1);
}

void Form::setLabelWidth(int width) {
  m_grid->setColumnMinimumWidth(0, width);
}

FormRow* Form::addRow(const QString& label, std::initializer_list<QWidget*> fields) {
  auto* row = new FormRow(fields, this);
  auto* text = makeFormLabel(label, u"label"_s, this);
  text->setAlignment(QStyle::visualAlignment(QGuiApplication::layoutDirection(), Qt::AlignRight) | Qt::AlignAbsolute |
                     Qt::AlignVCenter);
  text->setMinimumHeight(fieldHeight);
  text->setBuddy(row->firstField());
  nameField(row->firstField(), label);
  const int line = m_grid->rowCount();
  m_grid->addWidget(text, line, 0, Qt::AlignTop);
  m_grid->addWidget(row, line, 1);
  return row;
}

void Form::addWide(QWidget* widget) {
  m_grid->addWidget(widget, m_grid->rowCount(), 0, 1, 2);
}

QLabel* Form::labelOf(const FormRow& row) const {
  int line = 0;
  int column = 0;
  int rows = 0;
  int columns = 0;
  m_grid->getItemPosition(m_grid->indexOf(&row), &line, &column, &rows, &columns);
  return qobject_cast<QLabel*>(m_grid->itemAtPosition(line, 0)->widget());
}

void Form::setRowVisible(const FormRow& row, bool isVisible) {
  labelOf(row)->setVisible(isVisible);
  m_grid->itemAt(m_grid->indexOf(&row))->widget()->setVisible(isVisible);
}

void Form::setRowLabel(const FormRow& row, const QString& label) {
  labelOf(row)->setText(label);
}

}  // namespace quillo
