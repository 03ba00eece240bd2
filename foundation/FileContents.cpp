#include "foundation/FileContents.h"

#include "foundation/FileDescriptor.h"

#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

Error notRegular(const QString& path, qint64 code) {
  return cocoaError(code, path + u": not a regular file"_s);
}

}  // namespace

std::optional<QByteArray> contentsOfFile(const QString& path, Error* error) {
  // Without O_NONBLOCK a pipe in the file's place would hang the open.
  const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.isOpen()) return contentsOfOpenFile(file.number(), path, error);
  fail(error, fileReadError(errno, path));
  return std::nullopt;
}

std::optional<QByteArray> contentsOfOpenFile(int descriptor, const QString& path, Error* error) {
  const auto failed = [error](Error reason) -> std::optional<QByteArray> {
    fail(error, std::move(reason));
    return std::nullopt;
  };
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return failed(fileReadError(errno, path));
  if (!S_ISREG(status.st_mode)) return failed(notRegular(path, ErrorCode::fileReadCorrupt));
  if (status.st_size > largestFileRead)
    return failed(cocoaError(ErrorCode::fileReadCorrupt, path + u": too large to read"_s));

  QByteArray bytes(static_cast<qsizetype>(status.st_size), Qt::Uninitialized);
  qsizetype got = 0;
  // The size was bounded above, and each turn reads at least one byte or ends; what another writer appends meanwhile is
  // left for the next read.
  while (got < bytes.size()) {
    const ssize_t count = ::pread(descriptor, bytes.data() + got, static_cast<size_t>(bytes.size() - got), got);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failed(fileReadError(errno, path));
    if (count == 0) break;
    got += count;
  }
  bytes.truncate(got);
  return bytes;
}

namespace {

// Answers errno, or 0.
int fill(FileDescriptor& file, const QByteArray& bytes, qint64 oldSize) {
  if (bytes.size() > oldSize) {
    // Claims the blocks without changing the size, so a reader never sees a tail of zeros. A file system that cannot do
    // this leaves the failure to the write itself.
    const int claimed = ::fallocate(file.number(), FALLOC_FL_KEEP_SIZE, oldSize, bytes.size() - oldSize);
    if (claimed != 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) return errno;
  }
  if (const int number = writeAll(file.number(), bytes)) return number;
  if (::ftruncate(file.number(), bytes.size()) != 0) return errno;
  return file.close() ? 0 : errno;
}

// Opens the file, and makes it where it is missing; `isMade` receives whether this call did. Answers -1 with errno.
int openToWrite(const QByteArray& path, bool& isMade) {
  constexpr int flags = O_WRONLY | O_CLOEXEC | O_NONBLOCK;
  isMade = false;
  int file = ::open(path.constData(), flags);
  if (file >= 0 || errno != ENOENT) return file;
  file = ::open(path.constData(), flags | O_CREAT | O_EXCL, 0600);
  isMade = file >= 0;
  // Another program was faster, or a link leads to where nothing is yet.
  if (file < 0 && errno == EEXIST) file = ::open(path.constData(), flags | O_CREAT, 0600);
  return file;
}

}  // namespace

bool writeFileInPlace(const QString& path, const QByteArray& bytes, Error* error) {
  const QByteArray encoded = QFile::encodeName(path);
  bool isMade = false;
  FileDescriptor file(openToWrite(encoded, isMade));
  if (!file.isOpen()) return fail(error, fileWriteError(errno, path));
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return fail(error, fileWriteError(errno, path));
  if (!S_ISREG(status.st_mode)) return fail(error, notRegular(path, ErrorCode::fileWriteUnknown));
  const int number = fill(file, bytes, status.st_size);
  if (number == 0) return true;
  // Readers take a missing file for an empty list, but not an empty file.
  if (isMade) ::unlink(encoded.constData());
  return fail(error, fileWriteError(number, path));
}

bool writeOpenFileInPlace(FileDescriptor file, qint64 size, const QString& path, const QByteArray& bytes,
                          Error* error) {
  const int number = fill(file, bytes, size);
  return number == 0 || fail(error, fileWriteError(number, path));
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, Error* error) {
  QSaveFile file(path);
  errno = 0;
  if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) ||
      file.write(bytes) != bytes.size() || !file.commit()) {
    if (errno != 0) return fail(error, fileWriteError(errno, path));
    return fail(error, cocoaError(ErrorCode::fileWriteUnknown, path + u": "_s + file.errorString()));
  }
  return true;
}

}  // namespace quillo
