#include "exchange/backup/BackupRestore.h"

#include "exchange/backup/BackupReader.h"
#include "foundation/FolderOperations.h"
#include "qlcore/FolderFiles.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView restoring{"restoring"};
constexpr qint64 costOfFile = 4096;

bool isTaken(const QString& path) {
  struct stat status {};
  return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
}

// Everything is for the user alone, whatever the archive says.
class Unpacking final : public BackupReader::Visitor {
 public:
  // `folder` is new and empty, so that no path leads anywhere but to what was made here.
  Unpacking(std::string folder, QString shownPath) : m_folder(std::move(folder)), m_shownPath(std::move(shownPath)) {}

  bool folder(const std::string& path, Error* error) override {
    return ::mkdir((m_folder + '/' + path).c_str(), 0700) == 0 || failed(errno, error);
  }
  bool beginFile(const std::string& path, qint64, Error* error) override {
    m_file = FileDescriptor(
        ::open((m_folder + '/' + path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return m_file.isOpen() || failed(errno, error);
  }
  bool data(QByteArrayView bytes, Error* error) override {
    const int number = writeAll(m_file.number(), bytes);
    return number == 0 || failed(number, error);
  }
  bool endFile(const std::string& path, time_t modified, Error* error) override {
    // A time that the file system cannot hold is no reason to lose the file.
    const timespec times[] = {{.tv_sec = modified, .tv_nsec = 0}, {.tv_sec = modified, .tv_nsec = 0}};
    ::futimens(m_file.number(), times);
    if (isEntryPath(path)) ++m_entries;
    return m_file.close() || failed(errno, error);
  }

  [[nodiscard]] qint64 entries() const { return m_entries; }

 private:
  bool failed(int number, Error* error) const {
    return fail(error, JournalError::forWriting(fileWriteError(number, m_shownPath)));
  }

  std::string m_folder;
  QString m_shownPath;
  FileDescriptor m_file;
  qint64 m_entries{0};
};

}  // namespace

QString BackupRestore::freePlace(const QString& folder, const QString& journalName) {
  // A name that came with the backup, and becomes one of a file here.
  QString name = journalName;
  name.replace(u'/', u'-').replace(QChar(0), u'-');
  if (name.isEmpty() || name.startsWith(u'.')) name.prepend(u"Journal"_s);
  QString path;
  // The first that is free; who has so many is told that the last is taken.
  constexpr int namesToTry = 1000;
  for (int number = 1; number <= namesToTry; ++number) {
    path = u"%1/%2.quillojournal"_s.arg(folder, number == 1 ? name : u"%1 %2"_s.arg(name, QString::number(number)));
    if (!isTaken(path)) break;
  }
  return path;
}

// One run.
class BackupRestore::Work {
 public:
  explicit Work(const BackupRestore& restore)
      : m_restore(restore),
        m_target(QDir::cleanPath(restore.journal)),
        m_folder(QFileInfo(m_target).path()),
        m_name(QFileInfo(m_target).fileName()),
        m_temporary(m_folder + u'/' + pendingFolderName(m_name, restoring)) {}

  Result run() {
    if (!begin() || !unpack() || !check() || !takePlace()) {
      if (m_isMade) removeFolder(m_temporary);
      m_result.outcome = m_isStopped ? Outcome::Stopped : Outcome::Failed;
      // What went wrong is told of the place that the caller knows.
      m_result.error.localizedDescription.replace(m_temporary, m_target);
      return m_result;
    }
    m_result.outcome = Outcome::Restored;
    m_result.journal = QUrl::fromLocalFile(m_target);
    return m_result;
  }

 private:
  bool problem(JournalError::Code code, const QString& text) {
    return fail(&m_result.error, JournalError::make(code, text));
  }
  bool taken() { return problem(JournalError::AlreadyExists, m_target + u": there is something already"_s); }

  bool begin() {
    if (!m_name.endsWith(u".quillojournal"_s))
      return problem(JournalError::NotAPackage, m_target + u": a journal's name ends in .quillojournal"_s);
    if (!QFileInfo(m_folder).isDir())
      return problem(JournalError::JournalFileNotFound, m_folder + u": there is no such folder"_s);
    if (isTaken(m_target)) return taken();
    m_reader = BackupReader::open(m_restore.archive, &m_result.error);
    if (!m_reader) return false;
    removePendingFolders(m_folder, m_name, restoring);
    const BackupManifest& manifest = m_reader->manifest();
    constexpr qint64 largest = qint64{1} << 60;
    const qint64 room = std::min(manifest.bytes, largest) + costOfFile * std::min(manifest.files, largest / costOfFile);
    return hasRoomFor(QFile::encodeName(m_folder).toStdString(), room, &m_result.error);
  }

  bool tell(double done) {
    if (m_restore.progress && !m_restore.progress(done)) m_isStopped = true;
    return !m_isStopped;
  }

  bool unpack() {
    if (::mkdir(QFile::encodeName(m_temporary).constData(), 0700) != 0)
      return fail(&m_result.error, JournalError::forWriting(fileWriteError(errno, m_folder)));
    m_isMade = true;
    Unpacking unpacking(QFile::encodeName(m_temporary).toStdString(), m_folder);
    if (!m_reader->readAll(
            unpacking, [this](double done) { return tell(0.5 * done); }, &m_result.error))
      return false;
    m_result.entries = unpacking.entries();
    // Everything in one go, which is much faster than file by file.
    const FileDescriptor folder(::open(QFile::encodeName(m_temporary).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || ::syncfs(folder.number()) != 0)
      return fail(&m_result.error, JournalError::forWriting(fileWriteError(errno, m_folder)));
    return true;
  }

  bool check() {
    const auto all = static_cast<double>(std::max<size_t>(1, m_reader->checksums().size()));
    double done = 0;
    for (const auto& [path, digest] : m_reader->checksums()) {
      const std::string within = path.substr(m_reader->rootFolder().size() + 1);
      if (!checkFile(within, digest)) return false;
      if (!tell(0.5 + 0.5 * ++done / all)) return problem(JournalError::WriteFailed, u"stopped"_s);
    }
    return QLJournalPackageFile::openPackage(QUrl::fromLocalFile(m_temporary), /*create=*/false, &m_result.error) !=
           nullptr;
  }

  bool checkFile(const std::string& within, const QByteArray& digest) {
    const std::string path = QFile::encodeName(m_temporary).toStdString() + '/' + within;
    const FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    QFile file;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isOpen = descriptor.isOpen() && file.open(descriptor.number(), QFile::ReadOnly | QFile::Unbuffered);
    // From the disk, and not from what the kernel remembers to have written.
    if (isOpen) ::posix_fadvise(descriptor.number(), 0, 0, POSIX_FADV_DONTNEED);
    if (isOpen && hash.addData(&file) && hash.result() == digest) return true;
    return problem(JournalError::WriteFailed,
                   QFile::decodeName(path.c_str()) + u": what is there is not what was written; the disk may be bad"_s);
  }

  bool takePlace() {
    const int number = renameToFree(QFile::encodeName(m_temporary), QFile::encodeName(m_target));
    if (number == EEXIST || number == ENOTEMPTY) return taken();
    if (number != 0) return fail(&m_result.error, JournalError::forWriting(fileWriteError(number, m_target)));
    m_isMade = false;
    if (const int unsynced = syncFolder(m_folder))
      return fail(&m_result.error, JournalError::forWriting(fileWriteError(unsynced, m_target)));
    return true;
  }

  const BackupRestore& m_restore;
  QString m_target;
  QString m_folder;
  QString m_name;
  QString m_temporary;
  std::unique_ptr<BackupReader> m_reader;
  bool m_isMade{false};
  bool m_isStopped{false};
  Result m_result;
};

BackupRestore::Result BackupRestore::run() const {
  return Work(*this).run();
}

}  // namespace quillo
