#include "qlcore/JournalFolder.h"

#include "foundation/FileContents.h"
#include "qlcore/ConflictNames.h"

#include <QFile>
#include <QMutex>
#include <QRegularExpression>
#include <QSet>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

bool isTemporaryNameOfEntry(const QString& name, pid_t& writer) {
  writer = 0;
  static const QRegularExpression pattern(
      u"^\\.[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.plist\\.([0-9]{1,9})\\.[0-9]+\\.tmp$"_s);
  const auto match = pattern.match(name);
  writer = match.hasMatch() ? static_cast<pid_t>(match.captured(1).toInt()) : 0;
  return writer > 0;
}

}  // namespace

std::optional<JournalFolder> JournalFolder::open(const QString& path, Error* error) {
  const QByteArray encoded = QFile::encodeName(path);
  FileDescriptor folder(::open(encoded.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.isOpen()) return JournalFolder(std::move(folder), path);
  const int number = errno;
  struct stat status {};
  // A link is reported as "not a directory" or as "too many links", which says nothing to whoever reads it.
  const bool isLink = ::lstat(encoded.constData(), &status) == 0 && S_ISLNK(status.st_mode);
  fail(error, isLink ? linkRefused(path) : fileReadError(number, path));
  return std::nullopt;
}

std::optional<JournalFolder> JournalFolder::openOrMake(const QString& path, Error* error) {
  const QByteArray encoded = QFile::encodeName(path);
  if (::mkdir(encoded.constData(), 0700) != 0 && errno != EEXIST) {
    const int number = errno;
    // On a read-only file system the folder may be there all the same.
    if (::access(encoded.constData(), F_OK) != 0) {
      fail(error, fileWriteError(number, path));
      return std::nullopt;
    }
  }
  return open(path, error);
}

std::optional<QByteArray> JournalFolder::readFile(const QString& name, Error* error) const {
  const QString path = pathOf(name);
  // Without O_NONBLOCK a pipe in the file's place would hang the open.
  const FileDescriptor file(
      ::openat(m_folder.number(), QFile::encodeName(name).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.isOpen()) return contentsOfOpenFile(file.number(), path, error);
  fail(error, errno == ELOOP ? linkRefused(path) : fileReadError(errno, path));
  return std::nullopt;
}

qint64 JournalFolder::timeWritten(const QString& name) const {
  struct stat status {};
  if (::fstatat(m_folder.number(), QFile::encodeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) return 0;
  return qint64{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

qint64 JournalFolder::timeChanged(const QString& name) const {
  struct stat status {};
  if (::fstatat(m_folder.number(), QFile::encodeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) return 0;
  return qint64{status.st_ctim.tv_sec} * 1'000'000'000 + status.st_ctim.tv_nsec;
}

bool JournalFolder::replaceFile(const QString& name, const QByteArray& bytes, Error* error) const {
  StagedFiles files = stage();
  return files.add(name, bytes, error) && files.sync(error) && files.put(0, error) && files.syncFolder(error);
}

bool JournalFolder::removeFile(const QString& name, Error* error) const {
  const int failure = ::unlinkat(m_folder.number(), QFile::encodeName(name).constData(), 0) == 0 ? 0 : errno;
  return failure == 0 || fail(error, fileWriteError(failure, pathOf(name)));
}

namespace {

// Calls `visit` with every name in the folder, as it is there: most are passed by, and to decode a hundred thousand
// takes longer than to read them. Answers errno, or 0. Bounded by the size of the folder.
template <typename Visit>
int forEachName(int folder, Visit visit) {
  // A descriptor of its own: reading a folder moves the position that duplicates share.
  FileDescriptor own(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!own.isOpen()) return errno;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(own.number()), ::closedir);
  if (!directory) return errno;
  static_cast<void>(own.release());  // closed with the directory now
  while (true) {
    errno = 0;
    const dirent* entry = ::readdir(directory.get());
    if (!entry) return errno;
    visit(QByteArrayView(entry->d_name));
  }
}

}  // namespace

std::optional<QStringList> JournalFolder::namesThat(const std::function<bool(QByteArrayView)>& isWanted,
                                                    Error* error) const {
  QStringList names;
  const int number = forEachName(m_folder.number(), [&](QByteArrayView name) {
    if (isWanted(name)) names << QFile::decodeName(name.toByteArray());
  });
  if (number == 0) return names;
  fail(error, fileReadError(number, m_path));
  return std::nullopt;
}

std::optional<QStringList> JournalFolder::propertyListNames(Error* error, const QString& beginning) const {
  const QByteArray start = QFile::encodeName(beginning);
  const auto isWanted = [&start](QByteArrayView name) {
    const bool hasStart =
        name.size() >= start.size() && name.first(start.size()).compare(start, Qt::CaseInsensitive) == 0;
    return hasStart && !name.startsWith('.') && name.endsWith(".plist");
  };
  return namesThat(isWanted, error);
}

std::optional<QStringList> JournalFolder::conflictCopies(Error* error) const {
  return namesThat(ConflictNames::isConflictCopy, error);
}

std::optional<QStringList> JournalFolder::temporaryFiles(Error* error) const {
  // Nearly all are entries, whose names need no closer look.
  constexpr qsizetype entryLength = 42;
  const auto isWanted = [](QByteArrayView name) {
    return (name.size() != entryLength || !name.endsWith(".plist")) &&
           ConflictNames::isTemporary(QFile::decodeName(name.toByteArray()));
  };
  return namesThat(isWanted, error);
}

void JournalFolder::removeLeftovers() const {
  constexpr time_t oneDay{86'400};
  // Names are collected first: a folder that changes while it is read may show a name twice or not at all.
  QStringList leftovers;
  forEachName(m_folder.number(), [&](QByteArrayView bytes) {
    // Nearly none does, and the engine of expressions takes half a megabyte.
    if (!bytes.startsWith('.')) return;
    const QString name = QFile::decodeName(bytes.toByteArray());
    pid_t writer = 0;
    if (!isTemporaryNameOfEntry(name, writer)) return;
    struct stat status {};
    if (::fstatat(m_folder.number(), QFile::encodeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
    const bool isOld = ::time(nullptr) - status.st_mtime > oneDay;
    const bool writerIsGone = ::kill(writer, 0) != 0 && errno == ESRCH;
    if (isOld || writerIsGone) leftovers << name;
  });
  for (const QString& name : leftovers) ::unlinkat(m_folder.number(), QFile::encodeName(name).constData(), 0);
}

void JournalFolder::removeLeftoversOnce() const {
  {
    static QMutex mutex;
    static QSet<QString> done;
    const QMutexLocker lock(&mutex);
    if (done.contains(m_path)) return;
    done.insert(m_path);
  }
  removeLeftovers();
}

}  // namespace quillo
