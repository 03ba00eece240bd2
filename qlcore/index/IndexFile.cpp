#include "qlcore/index/IndexFile.h"

#include "foundation/FileContents.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView writing = "writing ";

// Makes the folder, and those above it, for the user alone where they are missing.
bool makeFolders(const QString& path) {
  struct stat status {};
  const QByteArray encoded = QFile::encodeName(path);
  if (::stat(encoded.constData(), &status) == 0) return S_ISDIR(status.st_mode);
  const QString above = QFileInfo(path).path();
  if (above != path && !makeFolders(above)) return false;
  return ::mkdir(encoded.constData(), 0700) == 0 || errno == EEXIST;
}

}  // namespace

QString IndexFile::folder() const {
  return QFileInfo(m_path).path();
}

bool IndexFile::makeFolder() const {
  if (!makeFolders(folder())) return false;
  ::chmod(QFile::encodeName(folder()).constData(), 0700);
  return true;
}

bool IndexFile::make() const {
  // The library makes its log with the rights that the file has.
  const FileDescriptor file(
      ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  struct stat status {};
  return file.isOpen() && ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::fchmod(file.number(), 0600) == 0;
}

bool IndexFile::isEmpty() const {
  const auto now = state();
  return !now || now->size == 0;
}

void IndexFile::discard() const {
  for (const QString& end : {u""_s, u"-wal"_s, u"-shm"_s, u"-journal"_s, u"-state"_s})
    ::unlink(QFile::encodeName(m_path + end).constData());
}

std::optional<IndexFile::State> IndexFile::state() const {
  struct stat status {};
  if (::lstat(QFile::encodeName(m_path).constData(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return State{status.st_size, qint64{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec, status.st_ino};
}

bool IndexFile::isAsRemembered() const {
  return state() == m_remembered;
}

bool IndexFile::isSound() {
  const auto now = state();
  const auto note = contentsOfFile(notePath());
  if (!now || !note) return false;
  if (note->startsWith(writing)) {
    const int process = note->sliced(writing.size()).trimmed().toInt();
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
  }
  const QList<QByteArray> parts = note->trimmed().split(' ');
  if (parts.size() != 3) return false;
  const State noted{parts[0].toLongLong(), parts[1].toLongLong(), parts[2].toULongLong()};
  if (*now != noted) return false;
  m_remembered = noted;
  return true;
}

void IndexFile::writeNote(const QByteArray& text) const {
  const FileDescriptor file(
      ::open(QFile::encodeName(notePath()).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
  // Without a note the file is not trusted, which is only slower.
  if (file.isOpen()) static_cast<void>(writeAll(file.number(), text));
}

void IndexFile::noteWriting() {
  writeNote(writing.toByteArray() + QByteArray::number(::getpid()) + '\n');
}

void IndexFile::noteWritten() {
  const auto now = state();
  m_remembered = now.value_or(State());
  writeNote(QByteArray::number(m_remembered.size) + ' ' + QByteArray::number(m_remembered.written) + ' ' +
            QByteArray::number(m_remembered.inode) + '\n');
}

qint64 IndexFile::logSize() const {
  struct stat status {};
  return ::lstat(QFile::encodeName(m_path + u"-wal"_s).constData(), &status) == 0 ? status.st_size : 0;
}

}  // namespace quillo
