#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace quillo {

struct Error;

// A question to the user, or news of a failure.
struct Alert {
  QString message;
  QString informativeText;
  QStringList buttons;  // the default one first
};

// Asks the user, as a sheet on a window.
class Alerts {
 public:
  virtual ~Alerts() = default;

  // Waits for the answer: the index of the button, or of the last one when the sheet was dismissed otherwise.
  virtual int runAlert(const Alert& alert, QWidget* window) = 0;

  // The error's texts with its recovery options as buttons, or "OK". There is nobody to carry an option out: each only
  // dismisses.
  void presentError(const Error& error, QWidget* window);
};

}  // namespace quillo
