#include "exchange/ImportRecordFolder.h"

#include "foundation/FolderOperations.h"
#include "foundation/UserDirectories.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// So many imports can be taken back, one after the other.
constexpr qsizetype mostRecords = 10;
constexpr int digitsOfNumber = 6;

const QString ending = u".import"_s;

std::optional<dev_t> deviceOf(const QString& path) {
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) return std::nullopt;
  return status.st_dev;
}

QString pathOfFolder(const QLJournalPackageFile& package) {
  const QString state = UserDirectories::current().state;
  const QString packagePath = QFileInfo(package.url().toLocalFile()).canonicalFilePath();
  QDir().mkpath(state);
  // One that came from another file system brings them along.
  QString own = packagePath + u"/.imports"_s;
  if (QFileInfo(own).isDir() || deviceOf(state) != deviceOf(packagePath)) return own;
  // An identifier comes from a file that others write, and may be missing.
  const auto identifier = QLJournalEntryFile::canonicalUUID(package.identifier());
  const QByteArray hash = QCryptographicHash::hash(packagePath.toUtf8(), QCryptographicHash::Sha1).toHex();
  return state + u"/quillo/imports/"_s + identifier.value_or(QString::fromLatin1(hash));
}

// Oldest first. Numbers of one length are in order by their names.
QStringList recordNames(const QString& folder) {
  return QDir(folder).entryList({u'*' + ending}, QDir::Files, QDir::Name);
}

}  // namespace

std::optional<ImportRecordFolder> ImportRecordFolder::claim(const QLJournalPackageFile& package, Error* error) {
  const QString path = pathOfFolder(package);
  const auto failed = [&](const QString& reason) {
    fail(error, cocoaError(ErrorCode::fileWriteUnknown, path + u": "_s + reason));
    return std::nullopt;
  };
  const auto permissions = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
  errno = 0;
  if (!QFileInfo(path).isDir() && (!QDir().mkpath(QFileInfo(path).path()) || !QDir().mkdir(path, permissions)))
    return failed(u"the folder for what is noted of an import cannot be made - "_s + qt_error_string(errno));
  FileDescriptor folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.isOpen()) return failed(qt_error_string(errno));
  // A file system without locks is used as if nobody else were there.
  if (::flock(folder.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    return failed(u"another import into this journal is under way"_s);
  return ImportRecordFolder(std::move(folder), path);
}

QString ImportRecordFolder::newest(const QLJournalPackageFile& package) {
  const QString folder = pathOfFolder(package);
  const QStringList names = recordNames(folder);
  return names.isEmpty() ? QString() : folder + u'/' + names.last();
}

QString ImportRecordFolder::pathForNext() const {
  const QStringList names = recordNames(m_path);
  const int last = names.isEmpty() ? 0 : names.last().left(digitsOfNumber).toInt();
  return u"%1/%2%3"_s.arg(m_path).arg(last + 1, digitsOfNumber, 10, QChar(u'0')).arg(ending);
}

void ImportRecordFolder::removeOld() const {
  const QStringList names = recordNames(m_path);
  for (qsizetype i = 0; i < names.size() - mostRecords; ++i) remove(m_path + u'/' + names[i]);
}

void ImportRecordFolder::remove(const QString& recordPath) const {
  ::unlink(QFile::encodeName(recordPath).constData());
  syncFolder(m_folder.number());
}

}  // namespace quillo
