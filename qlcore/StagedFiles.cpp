#include "qlcore/StagedFiles.h"

#include "foundation/FileContents.h"
#include "foundation/FolderOperations.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Readers pass names by that begin with a dot; the process identifier tells a leftover from work under way.
QByteArray temporaryName(const QByteArray& name) {
  static std::atomic<unsigned> counter{0};
  return "." + name + "." + QByteArray::number(::getpid()) + "." + QByteArray::number(++counter) + ".tmp";
}

// Makes a file with a name that no other has; `name` receives it. None, with errno, when it fails.
FileDescriptor makeTemporary(int folder, const QByteArray& target, QByteArray& name) {
  // A name is taken only by a leftover, or by a process of another machine that has the same identifier.
  for (int attempt = 0; attempt < 100; ++attempt) {
    name = temporaryName(target);
    FileDescriptor file(::openat(folder, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file.isOpen() || errno != EEXIST) return file;
  }
  return {};
}

Error notRegular(const QString& path) {
  return cocoaError(ErrorCode::fileReadCorrupt, path + u": not a regular file"_s);
}

}  // namespace

Error linkRefused(const QString& path) {
  return cocoaError(ErrorCode::fileReadCorrupt, path + u": a symbolic link, which is not followed inside a journal"_s);
}

StagedFiles::~StagedFiles() {
  for (const Staged& staged : m_files)
    if (!staged.temporary.isEmpty()) ::unlinkat(m_folder, staged.temporary.constData(), 0);
}

bool StagedFiles::add(const QString& name, const QByteArray& bytes, Error* error) {
  const QByteArray target = QFile::encodeName(name);
  struct stat status {};
  if (::fstatat(m_folder, target.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(status.st_mode))
    return fail(error, S_ISLNK(status.st_mode) ? linkRefused(pathOf(name)) : notRegular(pathOf(name)));
  QByteArray temporary;
  FileDescriptor file = makeTemporary(m_folder, target, temporary);
  if (!file.isOpen()) return fail(error, fileWriteError(errno, pathOf(name)));
  m_files.push_back({name, temporary, std::move(file)});
  const int number = writeAll(m_files.back().file.number(), bytes);
  return number == 0 || fail(error, fileWriteError(number, pathOf(name)));
}

bool StagedFiles::sync(Error* error) {
  // The disk gets all of them to do before the first is waited for; the file system then writes their names and sizes
  // together. Only a hint: what fails here fails below, too.
  if (m_files.size() > 1)
    for (const Staged& staged : m_files)
      if (staged.file.isOpen()) ::sync_file_range(staged.file.number(), 0, 0, SYNC_FILE_RANGE_WRITE);
  for (Staged& staged : m_files) {
    if (!staged.file.isOpen()) continue;
    int failure = ::fsync(staged.file.number()) == 0 ? 0 : errno;
    if (!staged.file.close() && failure == 0) failure = errno;
    if (failure != 0) return fail(error, fileWriteError(failure, pathOf(staged.name)));
  }
  return true;
}

bool StagedFiles::put(size_t index, Error* error) {
  Staged& staged = m_files.at(index);
  const QByteArray target = QFile::encodeName(staged.name);
  if (::renameat(m_folder, staged.temporary.constData(), m_folder, target.constData()) != 0)
    return fail(error, fileWriteError(errno, pathOf(staged.name)));
  staged.temporary.clear();
  return true;
}

bool StagedFiles::syncFolder(Error* error) {
  const int number = quillo::syncFolder(m_folder);
  return number == 0 || fail(error, fileWriteError(number, m_path));
}

}  // namespace quillo
