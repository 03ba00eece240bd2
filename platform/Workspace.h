#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// Hands URLs to the programs that are registered for them, and finds and starts programs. Waits for none of them.
class Workspace {
 public:
  virtual ~Workspace() = default;

  // False when no installed program handles the URL's scheme (or, for a file, its type), or none could be started.
  virtual bool openURL(const QUrl& url) = 0;

  // The launcher file of an installed program; nothing when it is not installed.
  [[nodiscard]] virtual std::optional<QUrl> urlForApplication(const QString& bundleIdentifier) const = 0;

  // False when the program is not installed or could not be started.
  virtual bool launchApplication(const QString& bundleIdentifier) = 0;
};

}  // namespace quillo
