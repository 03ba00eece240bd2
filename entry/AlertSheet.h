#pragma once

#include "entry/Alerts.h"

namespace quillo {

// Alerts as dialogs that belong to the window.
class AlertSheet final : public Alerts {
 public:
  int runAlert(const Alert& alert, QWidget* window) override;
};

}  // namespace quillo
