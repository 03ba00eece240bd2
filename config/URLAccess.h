#pragma once

#include <QUrl>

namespace quillo::URLAccess {

// Whether the process may read, or write, what is at the URL. Nothing there, and a URL that is no local file, read NO.
[[nodiscard]] bool isReadable(const QUrl& url);
// A read-only file system reads NO, for root too.
[[nodiscard]] bool isWritable(const QUrl& url);

}  // namespace quillo::URLAccess
