#include "foundation/FileManager.h"

#include "foundation/Trash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

namespace quillo::FileManager {

bool removeItemAtURL(const QUrl& url, bool moveToTrash, Error* error) {
  const QString path = url.toLocalFile();
  if (moveToTrash) return Trash::moveItem(path, error).has_value();
  const QFileInfo info(path);
  errno = 0;
  const bool removed = info.isDir() && !info.isSymLink() ? QDir(path).removeRecursively() : QFile::remove(path);
  return removed || fail(error, fileWriteError(errno ? errno : EIO, path));
}

}  // namespace quillo::FileManager
