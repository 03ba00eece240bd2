#pragma once

#include <QWidget>

#include <initializer_list>

class QHBoxLayout;
class QLabel;

namespace quillo {

// The fields of one row of a form, side by side, with a note and, below it, why what stands there could not be saved.
class FormRow : public QWidget {
  Q_OBJECT

 public:
  // Takes the fields over.
  explicit FormRow(std::initializer_list<QWidget*> fields, QWidget* parent = nullptr);

  // Plain text; an empty one takes no room.
  void setNote(const QString& text);
  // The same, in the colour of a problem, and said to assistive technology.
  void setError(const QString& text);
  [[nodiscard]] QString note() const;
  [[nodiscard]] QString error() const;

  void addField(QWidget* field);
  // At the far end of the row.
  void addFieldAtEnd(QWidget* field);
  [[nodiscard]] QWidget* firstField() const { return m_firstField; }

 private:
  QHBoxLayout* m_fields;
  QLabel* m_note;
  QLabel* m_error;
  QWidget* m_firstField{nullptr};
};

// A label of the interface: plain text, wrapped; `role` is what FormStyle colours it by, "note" for one.
[[nodiscard]] QLabel* makeFormLabel(const QString& text, const QString& role, QWidget* parent);

}  // namespace quillo
