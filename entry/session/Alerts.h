#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace quillo {

struct Error;

// A question to the user, or news of a failure.
struct Alert {
  // The error's texts with its recovery options as buttons, or "OK". There is nobody to carry an option out: each only
  // dismisses.
  [[nodiscard]] static Alert withError(const Error& error);

  QString message;
  QString informativeText;
  QStringList buttons;  // the default one first
};

// Asks the user, as a sheet on a window.
class Alerts {
 public:
  virtual ~Alerts() = default;

  // Returns at once. `answered` is told the index of the button, or of the last one when the sheet was dismissed
  // otherwise; an alert that goes with its window is never answered.
  virtual void beginSheet(const Alert& alert, QWidget* window, std::function<void(int)> answered) = 0;

  // Waits for the answer, as above; dismissed when the program ends meanwhile.
  virtual int runAlert(const Alert& alert, QWidget* window) = 0;
};

}  // namespace quillo
