#pragma once

#include "foundation/Error.h"

#include <QString>

#include <optional>

namespace quillo::Trash {

// Where a file went: the file itself, and the note beside it of where it came from.
struct Item {
  QString path;
  QString informationPath;
};

// Moves a file, folder or link into the user's Trash as the desktops keep it: the one in the home directory, or for
// another file system the one at its root. Nothing is copied; where no Trash takes it, it stays, and the error says
// why. Errors are of the OS-status domain; a missing file is status -43.
std::optional<Item> moveItem(const QString& path, Error* error = nullptr);

// The opposite: moves an item back to `path`, where nothing may be, and drops the note. It stays in the Trash where
// that fails. Errors as above.
bool putBack(const Item& item, const QString& path, Error* error = nullptr);

}  // namespace quillo::Trash
