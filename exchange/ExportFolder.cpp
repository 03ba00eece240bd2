#include "exchange/ExportFolder.h"

#include "exchange/ExportFile.h"
#include "foundation/FileDescriptor.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// One call for all of the files: to wait for each takes minutes with very many. Answers errno, or 0.
int syncFileSystemOf(const QString& folder) {
  const FileDescriptor opened(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened.isOpen()) return errno;
  return ::syncfs(opened.number()) == 0 ? 0 : errno;
}

}  // namespace

std::unique_ptr<ExportFolder> ExportFolder::make(const QString& path, bool isReplacing, Error* error) {
  const QFileInfo target(path);
  const bool isUsable =
      target.isDir() &&
      (isReplacing || QDir(path).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
  if (!isUsable && !isFree(path, error)) return nullptr;
  const QString temporary = u"%1/.%2.tmp"_s.arg(target.path(), QUuid::createUuid().toString(QUuid::Id128));
  if (::mkdir(QFile::encodeName(temporary).constData(), 0700) == 0)
    return std::unique_ptr<ExportFolder>(new ExportFolder(path, temporary, isReplacing));
  fail(error, fileWriteError(errno, target.path()));
  return nullptr;
}

ExportFolder::~ExportFolder() {
  // Made here, under a name that nobody else takes.
  QDir(m_temporary).removeRecursively();
}

bool ExportFolder::addFile(const QString& name, const QByteArray& bytes, Error* error) {
  const QString path = m_temporary + u'/' + name;
  FileDescriptor file(
      ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  int number = file.isOpen() ? writeAll(file.number(), bytes) : errno;
  if (!file.close() && number == 0) number = errno;
  return number == 0 || fail(error, fileWriteError(number, m_path + u'/' + name));
}

// Each of them is whole under its name, before and after.
bool ExportFolder::moveFiles(Error* error) const {
  QDirIterator files(m_temporary, QDir::Files | QDir::Hidden);
  while (files.hasNext()) {
    const QString from = files.next();
    const QString to = m_path + u'/' + files.fileName();
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
      return fail(error, fileWriteError(errno, to));
  }
  return true;
}

bool ExportFolder::finish(Error* error) {
  if (const int number = syncFileSystemOf(m_temporary)) return fail(error, fileWriteError(number, m_path));
  // What this replaces is an empty folder at most.
  if (std::rename(QFile::encodeName(m_temporary).constData(), QFile::encodeName(m_path).constData()) == 0) return true;
  const int number = errno;
  if (m_isReplacing && QFileInfo(m_path).isDir()) return moveFiles(error);
  return fail(error, fileWriteError(number, m_path));
}

}  // namespace quillo
