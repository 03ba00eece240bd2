#pragma once

#include "app/switches/LoginItem.h"

#include <QUrl>

#include <optional>

namespace quillo::URLAdditions {

// The nearest directory around the URL (never itself) whose extension is "app"; nothing when there is none up to the
// root.
[[nodiscard]] std::optional<QUrl> containingBundleURL(const QUrl& url);

// Whether the URL is in the session's login-items list; NO when there is no list.
[[nodiscard]] bool appURLWillStartAtLogin(const QUrl& url, LoginItemServices services);
// Adds the URL at the front of the list where it is missing, or takes it out where it is.
void setAppURLWillStartAtLogin(const QUrl& url, bool willStart, LoginItemServices services);

// By whole path components, case-sensitive, after "." and ".." are resolved; a URL is a subpath of itself. Only the
// paths are compared. NO for no URL.
[[nodiscard]] bool isSubpathOfURL(const QUrl& url, const std::optional<QUrl>& other);

}  // namespace quillo::URLAdditions
