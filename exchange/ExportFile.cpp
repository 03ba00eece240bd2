#include "exchange/ExportFile.h"

#include <QFile>

#include <sys/stat.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What the operating system says, where it says something.
bool failWith(Error* error, const QString& path, const QFileDevice& file) {
  if (errno != 0) return fail(error, fileWriteError(errno, path));
  return fail(error, cocoaError(ErrorCode::fileWriteUnknown, path + u": "_s + file.errorString()));
}

}  // namespace

bool isFree(const QString& path, Error* error) {
  struct stat status {};
  if (::lstat(QFile::encodeName(path).constData(), &status) != 0) return true;
  return fail(error, cocoaError(ErrorCode::fileWriteFileExists, path + u": there is something already"_s));
}

ExportFile::ExportFile(const QString& path, bool isReplacing)
    : m_path(path), m_isReplacing(isReplacing), m_file(path) {}

std::unique_ptr<ExportFile> ExportFile::make(const QString& path, bool isReplacing, Error* error) {
  if (!isReplacing && !isFree(path, error)) return nullptr;
  std::unique_ptr<ExportFile> made(new ExportFile(path, isReplacing));
  errno = 0;
  if (made->m_file.open(QIODevice::WriteOnly) && made->m_file.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
    return made;
  failWith(error, path, made->m_file);
  return nullptr;
}

bool ExportFile::flush(Error* error) {
  errno = 0;
  const bool isWritten = m_file.write(m_waiting) == m_waiting.size();
  m_waiting.clear();
  return isWritten || failWith(error, m_path, m_file);
}

bool ExportFile::write(const QByteArray& bytes, Error* error) {
  constexpr qsizetype portion = qsizetype{256} * 1024;
  m_waiting += bytes;
  return m_waiting.size() < portion || flush(error);
}

bool ExportFile::finish(Error* error) {
  // Another program may have been there meanwhile.
  if (!flush(error) || (!m_isReplacing && !isFree(m_path, error))) return false;
  errno = 0;
  return m_file.commit() || failWith(error, m_path, m_file);
}

}  // namespace quillo
