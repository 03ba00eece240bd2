#pragma once

#include "foundation/Error.h"

#include <sys/stat.h>

#include <ctime>
#include <map>
#include <string>

namespace quillo {

// What a file that was replaced or written to differs in.
struct FileStamp {
  mode_t mode{0};
  ino_t inode{0};
  off_t size{0};
  timespec modified{};

  // A folder changes with every file in it, so all that is kept of one is its mode.
  [[nodiscard]] static FileStamp of(const struct stat& status);
  bool operator==(const FileStamp& other) const;
};

// By the path within the folder, encoded as file names; a folder comes before what is in it.
using FolderFiles = std::map<std::string, FileStamp>;

// Everything below the folder `path` but the temporary files of entries that are being written. Links are not followed.
// False, with an error of JournalError::domain, where a part of it cannot be looked at.
bool scanFolder(const std::string& path, FolderFiles& found, Error* error);

// Whether the file system of `folder` has room for so many bytes more, or does not say. False with an error that tells
// both.
bool hasRoomFor(const std::string& folder, qint64 bytes, Error* error);

// Folders that are being filled lie beside their place under a hidden name with the process in it, which tells those of
// a process that is gone: this is that name for the folder `name`, and `work` says what is being done.
[[nodiscard]] QString pendingFolderName(const QString& name, QLatin1StringView work);
// Removes from `folder` those whose process is gone.
void removePendingFolders(const QString& folder, const QString& name, QLatin1StringView work);
// Whether the process by that number, as such a name has it, is another one that is gone, or this one.
[[nodiscard]] bool isOfFinishedWork(QStringView processNumber);

// Removes a folder with all that is in it; logged where that fails.
void removeFolder(const QString& path);

}  // namespace quillo
