#pragma once

#include <QString>

#include <functional>

namespace quillo {

// The program by which people look at folders.
class FileManager {
 public:
  virtual ~FileManager() = default;

  // Shows a file or folder in the folder that it is in, selected. Does not wait; `failed` is called, at once or later,
  // where no file manager does that.
  virtual void showItem(const QString& path, std::function<void()> failed) = 0;
};

}  // namespace quillo
