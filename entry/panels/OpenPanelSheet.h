#pragma once

#include "entry/session/OpenPanel.h"

namespace quillo {

// Qt's own panel, which unlike some desktops' offers files and folders alike.
class OpenPanelSheet final : public OpenPanel {
 public:
  void beginSheet(const QString& title, const QString& directory, QWidget* window,
                  std::function<void(const QString& path)> chosen) override;
};

}  // namespace quillo
