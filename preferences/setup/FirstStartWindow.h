#pragma once

#include "preferences/controls/ShortcutRecorder.h"
#include "preferences/model/FirstStart.h"

#include <QDialog>

#include <array>
#include <functional>

class QLabel;
class QPushButton;
class QStackedWidget;

namespace quillo {

class JournalStep;
class KeyStep;
class OpenPanel;
class ReminderRuleEditor;
class StepDots;
class StepHeader;

struct FirstStartWindowServices {
  // What the steps begin with.
  FirstStart proposed;
  ShortcutRecorderServices shortcut;
  // What is to be known of keys on this desktop; empty for nothing.
  QString shortcutNote{};
  OpenPanel& openPanel;
  // See FirstStart. Starting may take seconds, in an event loop.
  std::function<bool(const FirstStart& choice, Error* error)> apply;
  std::function<bool(const FirstStart& choice, QString* reason)> startAgent;
  // Called once everything is done, while the window is still there.
  std::function<void(const FirstStart& choice)> finished;
};

// The first start: the journal, reminders, and the key from anywhere, a step each. A step can be skipped, and gone back
// to with what was chosen. Closing the window at any step changes nothing: all is written by the last button.
class FirstStartWindow : public QDialog {
  Q_OBJECT

 public:
  explicit FirstStartWindow(FirstStartWindowServices services);
  ~FirstStartWindow() override;

  // In front.
  void showWindow();
  // What would be written now: of a step that is skipped nothing.
  [[nodiscard]] FirstStart result() const;

  void reject() override;

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  enum Step { Journal, Reminders, Key, steps };

  void build();
  [[nodiscard]] QPushButton* addButton(const QString& title, const QString& name);
  void showStep(int step);
  void goOn(bool skips);
  void finish();
  void setBusy(bool isBusy);
  void setProblem(const QString& text);
  void applyColors();

  FirstStartWindowServices m_services;
  FirstStart m_choice;
  std::array<bool, steps> m_isSkipped{};
  int m_step{Journal};
  bool m_isBusy{false};
  bool m_isWritten{false};

  StepHeader* m_header;
  QStackedWidget* m_stack;
  JournalStep* m_journal;
  ReminderRuleEditor* m_reminders;
  KeyStep* m_key;
  QLabel* m_problem;
  StepDots* m_dots;
  QPushButton* m_back;
  QPushButton* m_skip;
  QPushButton* m_continue;
};

}  // namespace quillo
