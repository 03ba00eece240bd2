#pragma once

#include "preferences/model/ReminderChoice.h"

#include <QWidget>

class QDateEdit;
class QLabel;
class QSpinBox;
class QTimeEdit;

namespace quillo {

class ChoiceBox;
class Form;
class FormRow;
class Switch;
class TickBox;

// The fields of a reminder's rule, with the rule in words and its next dates under them. Keeps a choice, and stores
// nothing.
class ReminderRuleEditor : public QWidget {
  Q_OBJECT

 public:
  explicit ReminderRuleEditor(QWidget* parent = nullptr);

  [[nodiscard]] const ReminderChoice& choice() const { return m_choice; }
  // Shows it without choiceChanged(). A field that has the keyboard is left alone where its value is the same.
  void setChoice(const ReminderChoice& choice);

  // See Form.
  void setLabelWidth(int width);

  // Below the fields: why what they say was not saved.
  void setError(const QString& text);
  // Shows the next dates anew, as time has gone on.
  void updateNextDates();

 Q_SIGNALS:
  // The user has changed something. Only choices without a problem(): that is said under the fields meanwhile.
  void choiceChanged(const quillo::ReminderChoice& choice);

 private:
  void build();
  void readFields();
  [[nodiscard]] std::optional<DailyWindow> windowOfFields() const;
  void showChoice();
  void showUnits();
  void updateSummary();

  ReminderChoice m_choice;
  bool m_isShowing{false};
  Form* m_form;
  Switch* m_on;
  QSpinBox* m_count;
  ChoiceBox* m_unit;
  QTimeEdit* m_from;
  QLabel* m_and;
  QTimeEdit* m_until;
  TickBox* m_allDay;
  QDateEdit* m_starting;
  TickBox* m_window;
  TickBox* m_notification;
  TickBox* m_sound;
  FormRow* m_everyRow{nullptr};
  FormRow* m_timeRow{nullptr};
  FormRow* m_startingRow{nullptr};
  FormRow* m_wayRow{nullptr};
  QLabel* m_words;
  QLabel* m_next;
};

}  // namespace quillo
