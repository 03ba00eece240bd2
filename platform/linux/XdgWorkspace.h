#pragma once

#include "platform/Workspace.h"

namespace quillo {

class ApplicationDatabase;
struct DesktopEntry;

// Starts the program that the desktop's association files name, as a process of its own that outlives this one. The
// handler is looked up here and not left to an opener program, as those report a missing handler late or not at all.
class XdgWorkspace final : public Workspace {
 public:
  bool openURL(const QUrl& url) override;
  [[nodiscard]] std::optional<QUrl> urlForApplication(const QString& bundleIdentifier) const override;
  bool launchApplication(const QString& bundleIdentifier) override;
};

// The program that opens `url`; nothing when there is none.
[[nodiscard]] std::optional<DesktopEntry> handlerOfURL(const QUrl& url, const ApplicationDatabase& database);

}  // namespace quillo
