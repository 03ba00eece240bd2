#pragma once

#include "preferences/controls/ShortcutRecorder.h"
#include "preferences/model/FirstStart.h"

#include <QWidget>

class QLabel;

namespace quillo {

class Switch;

// The key that opens the entry window, and whether the agent starts at login; below, what all steps have come to.
class KeyStep : public QWidget {
  Q_OBJECT

 public:
  // Changes `start`, which must outlive the step. `note` is what is to be known of keys on this desktop.
  KeyStep(FirstStart& start, ShortcutRecorderServices shortcut, const QString& note, QWidget* parent = nullptr);

  // What the choices come to, given what of them is skipped.
  void showSummary(const FirstStart& result);

 private:
  FirstStart& m_start;
  ShortcutRecorder* m_recorder;
  Switch* m_login;
  QLabel* m_journal;
  QLabel* m_reminders;
};

}  // namespace quillo
