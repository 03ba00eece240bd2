#pragma once

#include "foundation/Error.h"

#include <QByteArray>
#include <QUrl>

#include <optional>

namespace quillo {

// A way back to a file or folder that was chosen once: its path, device and inode in a small property list. Nothing is
// followed that moved; another file in the same place is found out.
namespace Bookmark {

// Options of creation and resolution, numbered as the platform numbers them.
inline constexpr int plain = 0;
inline constexpr int creationWithSecurityScope = 2048;
inline constexpr int resolutionWithSecurityScope = 1024;

struct Resolution {
  QUrl url;
  // Something else than was bookmarked is at the path now.
  bool isStale{false};
};

// Nothing, with an error, for no URL, one that is no local file, and a path where nothing is.
[[nodiscard]] std::optional<QByteArray> bookmarkData(const std::optional<QUrl>& url, int options,
                                                     Error* error = nullptr);

// Nothing, with an error, when `data` is no bookmark or nothing is at the path any more.
[[nodiscard]] std::optional<Resolution> resolve(const QByteArray& data, int options, Error* error = nullptr);

}  // namespace Bookmark
}  // namespace quillo
