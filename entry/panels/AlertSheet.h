#pragma once

#include "entry/session/Alerts.h"

namespace quillo {

// Alerts as dialogs that belong to the window.
class AlertSheet final : public Alerts {
 public:
  void beginSheet(const Alert& alert, QWidget* window, std::function<void(int)> answered) override;
  int runAlert(const Alert& alert, QWidget* window) override;
};

}  // namespace quillo
