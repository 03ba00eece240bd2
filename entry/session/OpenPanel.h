#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace quillo {

// Lets the user choose an existing file or folder, as a sheet on a window.
class OpenPanel {
 public:
  virtual ~OpenPanel() = default;

  // Returns at once. `chosen` is called with the path if and when the user has chosen; never after the window is gone.
  // While a panel is open on the window, another is not opened.
  virtual void beginSheet(const QString& title, const QString& directory, QWidget* window,
                          std::function<void(const QString& path)> chosen) = 0;
};

}  // namespace quillo
