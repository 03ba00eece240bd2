#include "foundation/FileManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>

namespace quillo::FileManager {

using namespace Qt::StringLiterals;

// The status for an operation that is not allowed, and the one for any other failure.
static constexpr qint64 statusPermission = -54;
static constexpr qint64 statusInputOutput = -36;

static Error statusError(qint64 status, const QString& text) {
  return {ErrorDomain::osStatus, status, text, {}, {}};
}

static bool isThere(const QString& path) {
  const QFileInfo info(path);
  return info.isSymLink() || info.exists();
}

static bool trash(const QString& path, Error* error) {
  const Error notFound = statusError(ErrorCode::fileNotFound, path + u": there is no such file"_s);
  if (!isThere(path)) return fail(error, notFound);
  // Without this folder the library reports success and moves the file below the current directory.
  if (!QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)))
    return fail(error, statusError(statusInputOutput, path + u": there is no place for a Trash"_s));
  QFile file(path);
  if (file.moveToTrash()) return true;
  // Somebody else was faster.
  if (!isThere(path)) return fail(error, notFound);
  const qint64 status = file.error() == QFileDevice::PermissionsError ? statusPermission : statusInputOutput;
  return fail(error, statusError(status, path + u": "_s + file.errorString()));
}

bool removeItemAtURL(const QUrl& url, bool moveToTrash, Error* error) {
  const QString path = url.toLocalFile();
  if (moveToTrash) return trash(path, error);
  const QFileInfo info(path);
  errno = 0;
  const bool removed = info.isDir() && !info.isSymLink() ? QDir(path).removeRecursively() : QFile::remove(path);
  return removed || fail(error, fileWriteError(errno ? errno : EIO, path));
}

}  // namespace quillo::FileManager
