#include "foundation/FolderOperations.h"

#include "foundation/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace quillo {

int syncFolder(int descriptor) {
  if (::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS) return 0;
  return errno;
}

int syncFolder(const QString& path) {
  const FileDescriptor folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return folder.isOpen() ? syncFolder(folder.number()) : errno;
}

int renameToFree(const QByteArray& from, const QByteArray& to) {
  if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A file system without that kind of rename. Nobody else is expected to want the name in the moment between.
  struct stat status {};
  if (::lstat(to.constData(), &status) == 0) return EEXIST;
  return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

}  // namespace quillo
