#include "foundation/Trash.h"

#include "foundation/FileDescriptor.h"
#include "foundation/FolderOperations.h"
#include "foundation/UserDirectories.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace quillo::Trash {

using namespace Qt::StringLiterals;

namespace {

// The status for an operation that is not allowed, and the one for any other failure.
constexpr qint64 statusPermission = -54;
constexpr qint64 statusInputOutput = -36;

// A Trash and the folder that the paths in it are relative to; for the one in the home directory they are absolute.
struct Folder {
  QString path;
  QString top;
};

Error statusError(int number, const QString& path, const QString& place) {
  if (number == ENOENT && place.isEmpty())
    return {ErrorDomain::osStatus, ErrorCode::fileNotFound, path + u": there is no such file"_s, {}, {}};
  const bool isForbidden = number == EACCES || number == EPERM || number == EROFS;
  QString text = path + u": cannot be moved to the Trash - "_s;
  if (!place.isEmpty()) text += place + u": "_s;
  text += QString::fromLocal8Bit(std::strerror(number));
  return {ErrorDomain::osStatus, isForbidden ? statusPermission : statusInputOutput, text, {}, {}};
}

std::optional<struct stat> statusOf(const QString& path) {
  struct stat status {};
  if (::lstat(QFile::encodeName(path).constData(), &status) != 0) return std::nullopt;
  return status;
}

// A folder for the user alone, made where it is missing. Answers errno, or 0.
int makeFolder(const QString& path) {
  return ::mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

// The highest folder above `path` that is on the same file system. Each turn goes one up, and the root ends it.
QString topOfFileSystem(QString path, dev_t device) {
  while (path != u"/") {
    const QString above = QFileInfo(path).path();
    const auto status = statusOf(above);
    if (!status || status->st_dev != device) break;
    path = above;
  }
  return path;
}

// A folder of our own at the root of a file system that others write to, too: no link, nobody else's.
bool isOwnFolder(const QString& path) {
  const auto status = statusOf(path);
  return status && S_ISDIR(status->st_mode) && status->st_uid == ::getuid();
}

// The Trash for what lies in `folder`, made where it is missing; nothing, with its place, when there can be none.
std::optional<Folder> trashFor(const QString& folder, QString& place, int& number) {
  place = UserDirectories::current().data;
  errno = 0;
  if (!QDir().mkpath(place)) {
    number = errno != 0 ? errno : EIO;
    return std::nullopt;
  }
  struct stat home {};
  struct stat here {};
  if (::stat(QFile::encodeName(place).constData(), &home) != 0 ||
      ::stat(QFile::encodeName(folder).constData(), &here) != 0) {
    number = errno;
    return std::nullopt;
  }
  place += u"/Trash"_s;
  if (home.st_dev == here.st_dev) {
    number = makeFolder(place);
    return number == 0 ? std::optional(Folder{place, {}}) : std::nullopt;
  }

  const QString top = topOfFileSystem(folder, here.st_dev);
  const QString prefix = top.endsWith(u'/') ? top : top + u'/';
  const QString user = QString::number(::getuid());
  // One for all users must let nobody remove what is another's.
  const auto common = statusOf(prefix + u".Trash"_s);
  if (common && S_ISDIR(common->st_mode) && (common->st_mode & S_ISVTX) != 0) {
    const QString own = prefix + u".Trash/"_s + user;
    if (makeFolder(own) == 0 && isOwnFolder(own)) return Folder{own, prefix};
  }
  place = prefix + u".Trash-"_s + user;
  number = makeFolder(place);
  if (number == 0 && !isOwnFolder(place)) number = EPERM;
  return number == 0 ? std::optional(Folder{place, prefix}) : std::nullopt;
}

QByteArray information(const QString& path, const Folder& trash) {
  const QString shown = trash.top.isEmpty() ? path : path.sliced(trash.top.size());
  return "[Trash Info]\nPath=" + QFile::encodeName(shown).toPercentEncoding("/") +
         "\nDeletionDate=" + QDateTime::currentDateTime().toString(u"yyyy-MM-ddTHH:mm:ss"_s).toLatin1() + '\n';
}

// Makes the note `path`. Answers errno, or 0; nothing of it then stays behind.
int writeInformation(const QByteArray& path, const QByteArray& bytes) {
  FileDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen()) return errno;
  int number = writeAll(file.number(), bytes);
  if (!file.close() && number == 0) number = errno;
  if (number != 0) ::unlink(path.constData());
  return number;
}

// The name itself first, then one with a random number before its ending.
QString nameForAttempt(const QString& name, int attempt) {
  if (attempt == 0) return name;
  const qsizetype dot = name.lastIndexOf(u'.');
  const QString number = u'.' + QString::number(QRandomGenerator::global()->generate(), 16);
  return dot > 0 ? name.first(dot) + number + name.sliced(dot) : name + number;
}

}  // namespace

std::optional<Item> moveItem(const QString& path, Error* error) {
  const auto failed = [&](int number, const QString& place = {}) -> std::optional<Item> {
    fail(error, statusError(number, path, place));
    return std::nullopt;
  };
  if (!statusOf(path)) return failed(errno == ENOTDIR ? ENOENT : errno);
  // By the real folder, since that is what the note is read for; a link in the file's own place is what goes.
  const QString folder = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath();
  const QString name = QFileInfo(path).fileName();
  const QString source = folder.endsWith(u'/') ? folder + name : folder + u'/' + name;

  QString place;
  int number = 0;
  const auto trash = trashFor(folder, place, number);
  if (!trash) return failed(number, place);
  const QString files = trash->path + u"/files"_s;
  const QString notes = trash->path + u"/info"_s;
  for (const QString& needed : {files, notes})
    if (const int reason = makeFolder(needed)) return failed(reason, needed);

  const QByteArray bytes = information(source, *trash);
  // Names are taken by chance only, and hardly twice.
  for (int attempt = 0; attempt < 20; ++attempt) {
    const QString free = nameForAttempt(name, attempt);
    const Item item{files + u'/' + free, notes + u'/' + free + u".trashinfo"_s};
    const QByteArray note = QFile::encodeName(item.informationPath);
    number = writeInformation(note, bytes);
    if (number == EEXIST) continue;
    if (number != 0) return failed(number, notes);
    // The note has claimed the name among all who keep to the rules.
    number = renameToFree(QFile::encodeName(source), QFile::encodeName(item.path));
    if (number == 0) return item;
    ::unlink(note.constData());
    // Somebody else was faster.
    if (number == ENOENT && !statusOf(path)) return failed(ENOENT);
    if (number != EEXIST) return failed(number, files);
  }
  return failed(EEXIST, files);
}

bool putBack(const Item& item, const QString& path, Error* error) {
  const int number = renameToFree(QFile::encodeName(item.path), QFile::encodeName(path));
  if (number == 0) {
    ::unlink(QFile::encodeName(item.informationPath).constData());
    return true;
  }
  const bool isGone = number == ENOENT && !statusOf(item.path);
  const QString reason = number == EEXIST ? u"there is another file in its place"_s
                         : isGone         ? u"it is not in the Trash any more"_s
                                          : QString::fromLocal8Bit(std::strerror(number));
  return fail(error, {ErrorDomain::osStatus,
                      isGone ? ErrorCode::fileNotFound : statusInputOutput,
                      u"%1: cannot be put back - %2"_s.arg(path, reason),
                      {},
                      {}});
}

}  // namespace quillo::Trash
