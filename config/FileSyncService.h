#pragma once

#include <QUrl>

#include <optional>

namespace quillo {

class RunningApplications;
class UserDefaults;
class Workspace;

// What is known of the file-sync service that a journal may be kept in. The agent carries these and does not call them.
namespace FileSyncService {

inline constexpr QLatin1StringView bundleIdentifier{"com.getdropbox.dropbox"};

// The folder that the bookmark in own defaults leads to; nothing, logged, when it cannot be resolved.
[[nodiscard]] std::optional<QUrl> appFolderURL(const UserDefaults& ownDefaults);
[[nodiscard]] bool isRunning(const RunningApplications& applications);
[[nodiscard]] std::optional<QUrl> applicationURL(const Workspace& workspace);
[[nodiscard]] bool isInstalled(const Workspace& workspace);
// False when it is not installed.
bool launch(Workspace& workspace);

}  // namespace FileSyncService
}  // namespace quillo
