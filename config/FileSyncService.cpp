#include "config/FileSyncService.h"

#include "config/Keys.h"
#include "foundation/Bookmark.h"
#include "foundation/Log.h"
#include "foundation/UserDefaults.h"
#include "platform/RunningApplications.h"
#include "platform/Workspace.h"

namespace quillo::FileSyncService {

using namespace Qt::StringLiterals;

std::optional<QUrl> appFolderURL(const UserDefaults& ownDefaults) {
  const auto data = ownDefaults.dataForKey(Key::dropboxAppFolderBookmarkData);
  if (!data) return std::nullopt;
  Error error;
  const auto resolved = Bookmark::resolve(*data, Bookmark::plain, &error);
  if (resolved) return resolved->url;
  QLLogInfo(u"Could not resolve Dropbox app folder bookmark: %1"_s.arg(error.description()));
  return std::nullopt;
}

bool isRunning(const RunningApplications& applications) {
  return !applications.running(bundleIdentifier).isEmpty();
}
std::optional<QUrl> applicationURL(const Workspace& workspace) {
  return workspace.urlForApplication(bundleIdentifier);
}
bool isInstalled(const Workspace& workspace) {
  return applicationURL(workspace).has_value();
}
bool launch(Workspace& workspace) {
  return isInstalled(workspace) && workspace.launchApplication(bundleIdentifier);
}

}  // namespace quillo::FileSyncService
