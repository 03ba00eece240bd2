#include "exchange/backup/JournalBackup.h"

#include "exchange/backup/BackupFolder.h"
#include "exchange/backup/BackupName.h"
#include "exchange/backup/BackupReader.h"
#include "exchange/backup/TarWriter.h"
#include "foundation/FileContents.h"
#include "foundation/FolderOperations.h"
#include "qlcore/FolderFiles.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/StorableValues.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What is not larger is read as a whole before any of it is written. Entries are far below.
constexpr qint64 largestInMemory = qint64{16} * 1024 * 1024;
// A small file takes about as long as this many bytes of a large one.
constexpr qint64 costOfFile = 4096;
// A file that somebody writes to without replacing it is read again so many times.
constexpr int mostReadings = 3;

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

// Inside of the one that is backed up, or of another.
bool isInJournal(const QString& folder, const QString& journal) {
  // It may be one that is still to be made.
  QString real = QFileInfo(folder).canonicalFilePath();
  if (real.isEmpty()) real = QFileInfo(QFileInfo(folder).path()).canonicalFilePath();
  real += u'/';
  return real.startsWith(journal + u'/') || real.contains(u".quillojournal/"_s);
}

}  // namespace

// One run.
class JournalBackup::Work {
 public:
  explicit Work(const JournalBackup& backup) : m_backup(backup) {}

  Result run() {
    if (!begin() || !write() || !verify() || !takePlace()) {
      if (!m_temporary.isEmpty()) ::unlink(QFile::encodeName(m_temporary).constData());
      m_result.outcome = m_isStopped ? Outcome::Stopped : Outcome::Failed;
      return m_result;
    }
    m_result.outcome = Outcome::Made;
    countChanges();
    // An older backup may have what this one lacks.
    if (m_backup.thinning && m_result.isComplete) thinOut(*m_backup.thinning);
    return m_result;
  }

 private:
  bool begin() {
    const auto package =
        QLJournalPackageFile::openPackage(QUrl::fromLocalFile(m_backup.journal), /*create=*/false, &m_result.error);
    if (!package) return false;
    const QString source = QFileInfo(m_backup.journal).canonicalFilePath();
    m_source = QFile::encodeName(source).toStdString();
    if (isInJournal(m_backup.folder, source))
      return fail(&m_result.error, cocoaError(ErrorCode::fileWriteUnknown,
                                              m_backup.folder + u": a backup cannot be inside of a journal"_s));
    m_folder = BackupFolder::open(m_backup.folder, &m_result.error);
    if (!m_folder || !scanFolder(m_source, m_files, &m_result.error)) return false;

    const QFileInfo folderOfJournal(QDir::cleanPath(m_backup.journal));
    m_root = QFile::encodeName(folderOfJournal.completeBaseName() + u".quillojournal"_s).toStdString();
    m_name = {folderOfJournal.completeBaseName(), QDateTime::currentDateTime(), 1};
    m_manifest = {storableText(m_name.journal),
                  storableText(package->identifier()),
                  toWholeSecond(Date::fromDateTime(m_name.begun)),
                  0,
                  0,
                  0};
    for (const auto& [path, stamp] : m_files) {
      if (!S_ISREG(stamp.mode)) continue;
      ++m_manifest.files;
      m_manifest.bytes += stamp.size;
      if (isEntryPath(path)) ++m_manifest.entries;
    }
    m_all = m_manifest.bytes + costOfFile * static_cast<qint64>(m_files.size());
    return true;
  }

  bool write() {
    m_temporary = m_folder->path() + u'/' + m_name.temporaryName();
    FileDescriptor file(
        ::open(QFile::encodeName(m_temporary).constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen()) return fail(&m_result.error, fileWriteError(errno, m_folder->path()));
    TarWriter writer(file.number(), m_folder->path());
    m_writer = &writer;
    Error* error = &m_result.error;
    if (!writer.begin(error) ||
        !writer.addFile(BackupMember::manifest, 0600, m_manifest.toPropertyList(), time(), error) ||
        !writer.addFolder(m_root, 0700, time(), error))
      return false;
    for (const auto& [path, stamp] : m_files)
      if (!add(path, stamp)) return false;
    if (!addChecksums() || !writer.end(error)) return false;
    if (::fsync(file.number()) != 0 || !file.close()) return fail(error, fileWriteError(errno, m_folder->path()));
    return true;
  }

  // Of them only their digest is kept: the look at what was written has its own.
  bool addChecksums() {
    const QByteArray text = checksumText(std::exchange(m_checksums, {}));
    m_digestOfChecksums = QCryptographicHash::hash(text, QCryptographicHash::Sha256);
    return m_writer->addFile(BackupMember::checksums, 0600, text, time(), &m_result.error);
  }

  [[nodiscard]] time_t time() const { return static_cast<time_t>(m_manifest.begun.timeIntervalSince1970()); }

  bool add(const std::string& path, const FileStamp& stamp) {
    bool isAdded = true;
    if (S_ISDIR(stamp.mode))
      isAdded = m_writer->addFolder(m_root + '/' + path, stamp.mode, time(), &m_result.error);
    else if (S_ISREG(stamp.mode))
      isAdded = addFile(path);
    else
      m_result.leftOut << shown(m_source + '/' + path) + u": neither a file nor a folder"_s;
    return isAdded && advance(costOfFile);
  }

  bool leaveOut(const QString& reason) {
    m_result.leftOut << reason;
    m_result.isComplete = false;
    return true;
  }

  bool addFile(const std::string& path) {
    const std::string full = m_source + '/' + path;
    for (int reading = 1;; ++reading) {
      const FileDescriptor file(::open(full.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
      if (!file.isOpen() && errno == ENOENT) return true;  // deleted since
      struct stat status {};
      if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return leaveOut(fileReadError(errno, shown(full)).localizedDescription);
      if (!S_ISREG(status.st_mode)) return leaveOut(shown(full) + u": not a file any more"_s);
      m_files[path] = FileStamp::of(status);
      if (status.st_size > largestInMemory) return addLargeFile(file.number(), path, status);
      Error error;
      const auto bytes = contentsOfOpenFile(file.number(), shown(full), &error);
      if (!bytes) return leaveOut(error.localizedDescription);
      struct stat after {};
      const bool isSteady = ::fstat(file.number(), &after) == 0 && FileStamp::of(after) == FileStamp::of(status);
      if (!isSteady && reading < mostReadings) continue;
      m_checksums[m_root + '/' + path] = QCryptographicHash::hash(*bytes, QCryptographicHash::Sha256);
      if (!m_writer->addFile(m_root + '/' + path, status.st_mode, *bytes, status.st_mtime, &m_result.error))
        return false;
      if (!isSteady) noteUnsteady(path);
      countEntry(path);
      return advance(bytes->size());
    }
  }

  // The size stands in front of the contents, so a file that is cut off meanwhile is filled up.
  bool addLargeFile(int file, const std::string& path, const struct stat& status) {
    if (!m_writer->beginFile(m_root + '/' + path, status.st_mode, status.st_size, status.st_mtime, &m_result.error))
      return false;
    const auto buffer = std::make_unique<std::array<char, 256 * 1024>>();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    bool isCutOff = false;
    for (qint64 left = status.st_size; left > 0;) {
      ssize_t count = ::read(file, buffer->data(), static_cast<size_t>(std::min<qint64>(left, buffer->size())));
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        isCutOff = true;
        buffer->fill(0);
        count = std::min<qint64>(left, buffer->size());
      }
      const QByteArrayView bytes(buffer->data(), count);
      hash.addData(bytes);
      if (!m_writer->addData(bytes, &m_result.error) || !advance(count)) return false;
      left -= count;
    }
    struct stat after {};
    if (isCutOff || ::fstat(file, &after) != 0 || !(FileStamp::of(after) == FileStamp::of(status))) noteUnsteady(path);
    m_checksums[m_root + '/' + path] = hash.result();
    countEntry(path);
    return true;
  }

  void noteUnsteady(const std::string& path) {
    m_result.leftOut << shown(m_source + '/' + path) +
                            u": written to while it was read, so it may be half old and new"_s;
    m_result.isComplete = false;
  }

  void countEntry(const std::string& path) {
    if (isEntryPath(path)) ++m_result.entries;
  }

  // The first half of the work is the writing.
  bool advance(qint64 done) {
    m_done += done;
    return tell(m_all > 0 ? std::min(0.5, 0.5 * static_cast<double>(m_done) / static_cast<double>(m_all)) : 0.5);
  }

  bool tell(double done) {
    if (m_backup.progress && !m_backup.progress(done)) m_isStopped = true;
    return !m_isStopped || fail(&m_result.error, cocoaError(ErrorCode::fileWriteUnknown, u"stopped"_s));
  }

  bool verify() {
    FileDescriptor file(::open(QFile::encodeName(m_temporary).constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!file.isOpen()) return fail(&m_result.error, fileReadError(errno, m_folder->path()));
    // From the disk, and not from what the kernel remembers to have written.
    ::posix_fadvise(file.number(), 0, 0, POSIX_FADV_DONTNEED);
    struct stat status {};
    if (::fstat(file.number(), &status) == 0) m_result.size = status.st_size;
    const auto reader = BackupReader::open(std::move(file), m_folder->path(), &m_result.error);
    BackupReader::Visitor nothingElse;
    if (!reader || !reader->readAll(
                       nothingElse, [this](double done) { return tell(0.5 + 0.5 * done); }, &m_result.error))
      return false;
    if (reader->manifest() == m_manifest && reader->digestOfChecksums() == m_digestOfChecksums) return true;
    return fail(&m_result.error,
                cocoaError(ErrorCode::fileWriteUnknown,
                           m_folder->path() + u": what is there is not what was written; the disk may be bad"_s));
  }

  // Whatever has the name of this second gets no other file in its place.
  bool takePlace() {
    constexpr int mostInASecond = 1000;
    int number = EEXIST;
    for (; m_name.number < mostInASecond; ++m_name.number) {
      m_result.path = m_folder->path() + u'/' + m_name.fileName();
      number = renameToFree(QFile::encodeName(m_temporary), QFile::encodeName(m_result.path));
      if (number != EEXIST) break;
    }
    if (number == 0) number = syncFolder(m_folder->descriptor());
    return number == 0 || fail(&m_result.error, fileWriteError(number, m_folder->path()));
  }

  void countChanges() {
    FolderFiles now;
    if (!scanFolder(m_source, now, nullptr)) return;
    for (const auto& [path, stamp] : now) {
      const auto taken = m_files.find(path);
      if (S_ISREG(stamp.mode) && (taken == m_files.end() || !(taken->second == stamp))) ++m_result.changed;
    }
  }

  // Only files that have a backup's name and are one of this very journal.
  void thinOut(const ThinningRule& rule) {
    if (m_manifest.journalIdentifier.isEmpty()) return;
    auto backups = backupsInFolder(m_folder->path(), nullptr).value_or(QList<StoredBackup>());
    backups.removeIf([this](const StoredBackup& one) {
      return !one.manifest || one.manifest->journalIdentifier != m_manifest.journalIdentifier;
    });
    QList<QDateTime> begun;
    qsizetype whole = -1;
    for (const StoredBackup& one : backups) {
      if (one.path == m_result.path) whole = begun.size();
      begun << one.begun();
    }
    if (whole < 0) return;
    for (const qsizetype index : superfluousBackups(begun, whole, rule))
      if (::unlink(QFile::encodeName(backups[index].path).constData()) == 0)
        m_result.removed << backups[index].fileName;
  }

  const JournalBackup& m_backup;
  Result m_result;
  std::string m_source;
  std::string m_root;
  std::optional<BackupFolder> m_folder;
  FolderFiles m_files;
  BackupName m_name;
  BackupManifest m_manifest;
  QString m_temporary;
  TarWriter* m_writer{nullptr};
  BackupChecksums m_checksums;
  QByteArray m_digestOfChecksums;
  qint64 m_done{0};
  qint64 m_all{0};
  bool m_isStopped{false};
};

JournalBackup::Result JournalBackup::run() const {
  return Work(*this).run();
}

}  // namespace quillo
