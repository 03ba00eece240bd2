#include "exchange/backup/BackupFolder.h"

#include "exchange/backup/BackupName.h"
#include "exchange/backup/BackupReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

StoredBackup looked(const QFileInfo& file) {
  StoredBackup backup{file.filePath(), file.fileName(), file.size(), {}, {}};
  Error error;
  if (const auto reader = BackupReader::open(backup.path, &error))
    backup.manifest = reader->manifest();
  else
    backup.problem = error.localizedDescription;
  return backup;
}

}  // namespace

QDateTime StoredBackup::begun() const {
  if (manifest) return manifest->begun.toDateTime().toLocalTime();
  const auto name = BackupName::of(fileName);
  return name ? name->begun : QDateTime();
}

int StoredBackup::number() const {
  const auto name = BackupName::of(fileName);
  return name ? name->number : 0;
}

std::optional<QList<StoredBackup>> backupsInFolder(const QString& path, Error* error) {
  QList<StoredBackup> backups;
  const QDir folder(path);
  if (!folder.exists()) return backups;
  if (::access(QFile::encodeName(path).constData(), R_OK | X_OK) != 0) {
    fail(error, fileReadError(errno, path));
    return std::nullopt;
  }
  const auto files = folder.entryInfoList(QDir::Files | QDir::NoSymLinks);
  for (const QFileInfo& file : files)
    if (BackupName::of(file.fileName())) backups << looked(file);
  std::stable_sort(backups.begin(), backups.end(), [](const StoredBackup& a, const StoredBackup& b) {
    return std::tuple(a.begun(), a.number(), a.fileName) > std::tuple(b.begun(), b.number(), b.fileName);
  });
  return backups;
}

std::optional<BackupFolder> BackupFolder::open(const QString& path, Error* error) {
  const QByteArray encoded = QFile::encodeName(path);
  if (::mkdir(encoded.constData(), 0700) != 0 && errno != EEXIST && !QFileInfo(path).isDir()) {
    fail(error, fileWriteError(errno, path));
    return std::nullopt;
  }
  FileDescriptor descriptor(::open(encoded.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor.isOpen()) {
    fail(error, fileWriteError(errno, path));
    return std::nullopt;
  }
  const bool isLocked = ::flock(descriptor.number(), LOCK_EX | LOCK_NB) == 0;
  if (!isLocked && errno == EWOULDBLOCK) {
    fail(error, cocoaError(ErrorCode::fileWriteUnknown, path + u": another backup is being made there"_s));
    return std::nullopt;
  }
  BackupFolder folder(path, std::move(descriptor));
  folder.removeLeftovers(isLocked);
  return folder;
}

// Under the lock whoever wrote them is gone. A file system that cannot lock says nothing of that; there a day is
// waited.
void BackupFolder::removeLeftovers(bool isLocked) const {
  const QDateTime aDayAgo = QDateTime::currentDateTimeUtc().addDays(-1);
  const auto files = QDir(m_path).entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
  for (const QFileInfo& file : files)
    if (BackupName::isTemporary(file.fileName()) && (isLocked || file.lastModified() < aDayAgo))
      ::unlink(QFile::encodeName(file.filePath()).constData());
}

}  // namespace quillo
