#include "qlcore/FolderFiles.h"

#include "foundation/Log.h"
#include "qlcore/JournalError.h"

#include <QDir>
#include <QFile>
#include <QLocale>

#include <signal.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

bool readFailed(Error* error, int number, const std::string& path) {
  return fail(error, JournalError::make(JournalError::NotReadable,
                                        fileReadError(number, QFile::decodeName(path.c_str())).localizedDescription));
}

// As JournalFolder names what it is writing.
bool isBeingWritten(std::string_view name) {
  return name.starts_with('.') && name.ends_with(".tmp") && name.find(".plist.") != std::string_view::npos;
}

}  // namespace

bool FileStamp::operator==(const FileStamp& other) const {
  return mode == other.mode && inode == other.inode && size == other.size && modified.tv_sec == other.modified.tv_sec &&
         modified.tv_nsec == other.modified.tv_nsec;
}

FileStamp FileStamp::of(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return {.mode = status.st_mode};
  return {status.st_mode, status.st_ino, status.st_size, status.st_mtim};
}

// Links are not followed, so the walk ends with the tree.
bool scanFolder(const std::string& path, FolderFiles& found, Error* error) {
  namespace fs = std::filesystem;
  std::error_code problem;
  fs::recursive_directory_iterator walk(path, fs::directory_options::none, problem);
  for (const fs::recursive_directory_iterator end; !problem && walk != end; walk.increment(problem)) {
    const std::string& item = walk->path().native();
    if (isBeingWritten(std::string_view(item).substr(item.find_last_of('/') + 1))) continue;
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) {
      if (errno == ENOENT) continue;  // gone since
      return readFailed(error, errno, item);
    }
    found.emplace(item.substr(path.size() + 1), FileStamp::of(status));
  }
  return !problem || readFailed(error, problem.value(), path);
}

bool hasRoomFor(const std::string& folder, qint64 bytes, Error* error) {
  struct statvfs volume {};
  if (::statvfs(folder.c_str(), &volume) != 0 || volume.f_blocks == 0) return true;  // it does not say
  const qint64 room = static_cast<qint64>(volume.f_bavail) * static_cast<qint64>(volume.f_frsize);
  if (room >= bytes) return true;
  const QLocale locale = QLocale::c();
  return fail(error, JournalError::make(JournalError::OutOfSpace,
                                        u"%1: there is not enough room, it takes %2 and there is %3"_s.arg(
                                            QFile::decodeName(folder.c_str()), locale.formattedDataSize(bytes),
                                            locale.formattedDataSize(room))));
}

QString pendingFolderName(const QString& name, QLatin1StringView work) {
  return u".%1.%2.%3"_s.arg(name).arg(::getpid()).arg(work);
}

void removeFolder(const QString& path) {
  // By the bytes of the names: those that are no text in this locale go, too.
  std::error_code problem;
  std::filesystem::remove_all(QFile::encodeName(path).toStdString(), problem);
  if (problem) QLLogWarn(u"%1 could not be removed; it is the beginning of a copy of the journal"_s.arg(path));
}

void removePendingFolders(const QString& folder, const QString& name, QLatin1StringView work) {
  const QString beginning = u".%1."_s.arg(name);
  const QString ending = u'.' + work;
  const auto entries = QDir(folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
  for (const QString& entry : entries) {
    if (!entry.startsWith(beginning) || !entry.endsWith(ending)) continue;
    const auto writer = QStringView(entry).sliced(beginning.size(), entry.size() - beginning.size() - ending.size());
    if (isOfFinishedWork(writer)) removeFolder(folder + u'/' + entry);
  }
}

bool isOfFinishedWork(QStringView processNumber) {
  bool isNumber = false;
  const int writer = processNumber.toInt(&isNumber);
  if (!isNumber || writer <= 0) return false;
  // One of this process is of work that failed to remove it.
  return writer == ::getpid() || (::kill(writer, 0) != 0 && errno == ESRCH);
}

}  // namespace quillo
