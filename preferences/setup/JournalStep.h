#pragma once

#include "preferences/model/FirstStart.h"

#include <QWidget>

#include <functional>

class QLabel;

namespace quillo {

class ChoiceCard;
class OpenPanel;

// Where the journal is to be: a new one in a folder, which may begin with another program's entries, or one that is
// there.
class JournalStep : public QWidget {
  Q_OBJECT

 public:
  // Changes `start`; both must outlive the step.
  JournalStep(FirstStart& start, OpenPanel& openPanel, QWidget* parent = nullptr);

  // Whether what is chosen can be used; else that is said, or the panel to choose a journal comes up. `chosen` is
  // called when one was chosen there that can be.
  bool isReady(std::function<void()> chosen);

 private:
  void show();
  void cardChosen();
  void chooseFolder();
  void chooseJournal(std::function<void()> chosen);
  void setProblem(const QString& text);

  FirstStart& m_start;
  OpenPanel& m_openPanel;
  ChoiceCard* m_new;
  ChoiceCard* m_existing;
  ChoiceCard* m_bringsIn;
  QLabel* m_problem;
};

}  // namespace quillo
