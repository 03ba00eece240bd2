#pragma once

#include "foundation/Error.h"

#include <QUrl>

namespace quillo::FileManager {

// Removes a file or folder, or moves it to the user's Trash. A missing file is, in the Trash's case, OS status -43.
bool removeItemAtURL(const QUrl& url, bool moveToTrash, Error* error = nullptr);

}  // namespace quillo::FileManager
