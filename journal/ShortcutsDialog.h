#pragma once

#include <QDialog>

namespace quillo {

struct JournalCommands;

// The keys of the window and what they do.
class ShortcutsDialog : public QDialog {
  Q_OBJECT

 public:
  ShortcutsDialog(const JournalCommands& commands, QWidget* parent);
};

}  // namespace quillo
