#pragma once

#include <QString>

namespace quillo {

// "~" and "~/..." with the user's home directory; "~name/..." with that user's, unchanged when there is none.
[[nodiscard]] QString stringByExpandingTildeInPath(const QString& path);

// The home directory of the user that runs the process, from the password database.
[[nodiscard]] QString userHomeDirectory();

// Replaces a first character "~" by userHomeDirectory(), whatever follows it: of "~name" the name stays behind the
// home directory, as the main application reads such paths. Nothing else is changed.
[[nodiscard]] QString stringByExpandingTildeInPathToActualUserHomeDirectory(const QString& path);

}  // namespace quillo
