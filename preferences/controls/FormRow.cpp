#include "preferences/controls/FormRow.h"

#include "controls/Fonts.h"
#include "preferences/controls/Problem.h"

#include <QCheckBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

QLabel* makeFormLabel(const QString& text, const QString& role, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setFont(textFont(role == u"label"_s || role.isEmpty() ? 13 : 12));
  label->setProperty("role", role);
  // On the side of its field, whichever way its own words run.
  label->setAlignment(Qt::AlignVCenter | QStyle::visualAlignment(QGuiApplication::layoutDirection(), Qt::AlignLeft) |
                      Qt::AlignAbsolute);
  return label;
}

FormRow::FormRow(std::initializer_list<QWidget*> fields, QWidget* parent)
    : QWidget(parent),
      m_fields(new QHBoxLayout),
      m_note(makeFormLabel({}, u"note"_s, this)),
      m_error(makeFormLabel({}, u"error"_s, this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(3);
  column->addLayout(m_fields);
  column->addWidget(m_note);
  column->addWidget(m_error);
  m_fields->setSpacing(8);
  m_fields->addStretch();
  m_error->setObjectName(u"error"_s);
  m_note->hide();
  m_error->hide();
  for (QWidget* field : fields) addField(field);
}

void FormRow::addField(QWidget* field) {
  // Before the stretch at the end; a field that grows takes its place.
  const bool grows = (field->sizePolicy().horizontalPolicy() & QSizePolicy::ExpandFlag) != 0;
  m_fields->insertWidget(m_fields->count() - 1, field, grows ? 1 : 0);
  // Its mark stands inside the ring of the focus; what is said of it begins where the mark does.
  if (m_fields->count() == 2 && qobject_cast<QCheckBox*>(field))
    for (QLabel* label : {m_note, m_error}) label->setContentsMargins(3, 0, 0, 0);
  if (!m_firstField && field->focusPolicy() != Qt::NoFocus) m_firstField = field;
}

void FormRow::addFieldAtEnd(QWidget* field) {
  m_fields->addWidget(field);
  if (!m_firstField) m_firstField = field;
}

void FormRow::setNote(const QString& text) {
  m_note->setText(text);
  m_note->setVisible(!text.isEmpty());
}

void FormRow::setError(const QString& text) {
  if (text == error()) return;
  m_error->setVisible(!text.isEmpty());
  if (m_firstField) m_firstField->setAccessibleDescription(text);
  showProblem(*m_error, text);
}

QString FormRow::note() const {
  return m_note->text();
}

QString FormRow::error() const {
  return m_error->text();
}

}  // namespace quillo
