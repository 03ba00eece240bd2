#include "exchange/backup/BackupReader.h"

#include <QCryptographicHash>
#include <QFile>

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t blockSize = size_t{256} * 1024;
constexpr qint64 mebibyte = qint64{1024} * 1024;
constexpr qint64 largestManifest = mebibyte;
constexpr qint64 largestChecksums = 256 * mebibyte;
// Of a journal with a million entries all paths together are half of this.
constexpr qint64 mostBytesOfPaths = 128 * mebibyte;
constexpr size_t longestName = 255;
constexpr size_t longestPath = 4000;
constexpr std::string_view journalEnding = ".quillojournal";

// While a backup is made, files may grow and new ones come; what is far beyond is no journal.
qint64 mostOf(qint64 announced, qint64 more) {
  constexpr qint64 largest = qint64{1} << 60;
  return 2 * std::min(announced, largest) + more;
}

// Whether it is names with a slash between them, none of which leads elsewhere.
bool isPlainPath(std::string_view path) {
  if (path.empty() || path.size() > longestPath) return false;
  // Each turn takes a name.
  while (true) {
    const size_t end = std::min(path.find('/'), path.size());
    const std::string_view name = path.substr(0, end);
    if (name.empty() || name.size() > longestName || name == "." || name == "..") return false;
    if (end == path.size()) return true;
    path.remove_prefix(end + 1);
  }
}

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

}  // namespace

void BackupReader::Free::operator()(archive* one) const {
  archive_read_free(one);
}

BackupReader::BackupReader(FileDescriptor file, QString shownPath)
    : m_file(std::move(file)), m_shownPath(std::move(shownPath)), m_archive(archive_read_new()) {}

BackupReader::~BackupReader() = default;

bool BackupReader::damaged(const QString& why, Error* error) const {
  return fail(error, cocoaError(ErrorCode::fileReadCorrupt, m_shownPath + u": no whole backup: "_s + why));
}

bool BackupReader::readFailed(Error* error) const {
  const int number = archive_errno(m_archive.get());
  if (number == EIO || number == ENOMEM || number == EISDIR) return fail(error, fileReadError(number, m_shownPath));
  const char* text = archive_error_string(m_archive.get());
  return damaged(text ? QString::fromUtf8(text) : u"it cannot be read"_s, error);
}

std::unique_ptr<BackupReader> BackupReader::open(const QString& path, Error* error) {
  // Without O_NONBLOCK a pipe would hang it.
  FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (file.isOpen()) return open(std::move(file), path, error);
  fail(error, fileReadError(errno, path));
  return nullptr;
}

std::unique_ptr<BackupReader> BackupReader::open(FileDescriptor file, const QString& shownPath, Error* error) {
  std::unique_ptr<BackupReader> reader(new BackupReader(std::move(file), shownPath));
  if (!reader->begin(error)) return nullptr;
  return reader;
}

bool BackupReader::begin(Error* error) {
  struct stat status {};
  if (::fstat(m_file.number(), &status) != 0) return fail(error, fileReadError(errno, m_shownPath));
  if (!S_ISREG(status.st_mode))
    return fail(error, cocoaError(ErrorCode::fileReadCorrupt, m_shownPath + u": not a file"_s));
  m_fileSize = status.st_size;
  archive* in = m_archive.get();
  if (!in) return fail(error, fileReadError(ENOMEM, m_shownPath));
  // Nothing else than what we write, and the same uncompressed: each further format would be one more to be deceived
  // by.
  archive_read_support_filter_zstd(in);
  archive_read_support_format_tar(in);
  if (archive_read_open_fd(in, m_file.number(), blockSize) != ARCHIVE_OK) return readFailed(error);
  const Step step = nextHeader(error);
  if (step == Step::Failed) return false;
  if (step == Step::End || std::string_view(archive_entry_pathname(m_entry)) != BackupMember::manifest)
    return damaged(u"it does not begin with "_s + QLatin1StringView(BackupMember::manifest), error);
  const auto bytes = readSmallFile(largestManifest, error);
  if (!bytes) return false;
  Error reason;
  const auto manifest = BackupManifest::fromPropertyList(*bytes, &reason);
  if (!manifest)
    return damaged(u"%1: %2"_s.arg(QLatin1StringView(BackupMember::manifest), reason.localizedDescription), error);
  m_manifest = *manifest;
  return true;
}

BackupReader::Step BackupReader::nextHeader(Error* error) {
  const int result = archive_read_next_header(m_archive.get(), &m_entry);
  if (result == ARCHIVE_EOF) return Step::End;
  if (result != ARCHIVE_OK) {
    readFailed(error);
    return Step::Failed;
  }
  const auto refuse = [&](const QString& why) {
    damaged(why, error);
    return Step::Failed;
  };
  const char* path = archive_entry_pathname(m_entry);
  if (!path) return refuse(u"a name in it cannot be read"_s);
  const mode_t type = archive_entry_filetype(m_entry);
  const bool isPlain = archive_entry_hardlink(m_entry) == nullptr && archive_entry_symlink(m_entry) == nullptr &&
                       archive_entry_sparse_count(m_entry) == 0 && (type == AE_IFREG || type == AE_IFDIR);
  if (!isPlain) return refuse(shown(path) + u" is neither a plain file nor a folder"_s);
  if (type == AE_IFREG && (!archive_entry_size_is_set(m_entry) || archive_entry_size(m_entry) < 0))
    return refuse(shown(path) + u" has no size"_s);
  m_bytesOfPaths += static_cast<qint64>(std::string_view(path).size());
  if (m_bytesOfPaths > mostBytesOfPaths) return refuse(u"there are too many names in it"_s);
  return Step::Member;
}

bool BackupReader::readData(qint64 size, const std::function<bool(QByteArrayView)>& take, Error* error) {
  qint64 done = 0;
  const void* block = nullptr;
  size_t count = 0;
  la_int64_t offset = 0;
  // Ends with the member, whose size was checked.
  while (true) {
    const int result = archive_read_data_block(m_archive.get(), &block, &count, &offset);
    if (result == ARCHIVE_EOF) break;
    if (result != ARCHIVE_OK) return readFailed(error);
    if (offset != done || static_cast<qint64>(count) > size - done)
      return damaged(u"a file in it is not as long as it says"_s, error);
    done += static_cast<qint64>(count);
    if (!take(QByteArrayView(static_cast<const char*>(block), static_cast<qsizetype>(count)))) return false;
    if (!advance(error)) return false;
  }
  return done == size || damaged(u"a file in it is not as long as it says"_s, error);
}

std::optional<QByteArray> BackupReader::readSmallFile(qint64 bound, Error* error) {
  const qint64 size = archive_entry_size(m_entry);
  const QString name = shown(archive_entry_pathname(m_entry));
  if (archive_entry_filetype(m_entry) != AE_IFREG || size > bound) {
    damaged(name + u" cannot be so large"_s, error);
    return std::nullopt;
  }
  QByteArray bytes;
  const auto take = [&bytes](QByteArrayView part) {
    bytes.append(part);
    return true;
  };
  if (!readData(size, take, error)) return std::nullopt;
  return bytes;
}

// Called once a block and once a member.
bool BackupReader::advance(Error* error) {
  if (!m_progress) return true;
  const auto done = static_cast<double>(archive_filter_bytes(m_archive.get(), -1));
  if (!m_progress(m_fileSize > 0 ? std::min(1.0, done / static_cast<double>(m_fileSize)) : 1)) m_isStopped = true;
  return !m_isStopped || fail(error, cocoaError(ErrorCode::fileReadUnknown, m_shownPath + u": stopped"_s));
}

bool BackupReader::checkPlace(const std::string& path, bool isFolder, std::string& within, Error* error) {
  if (!isPlainPath(path)) return damaged(shown(path) + u" leads out of it"_s, error);
  if (m_root.empty()) {
    const bool isJournal = isFolder && path.find('/') == std::string::npos && path.ends_with(journalEnding) &&
                           path.size() > journalEnding.size();
    if (!isJournal) return damaged(u"it does not have a journal in it"_s, error);
    m_root = path;
  } else if (!path.starts_with(m_root + '/')) {
    return damaged(shown(path) + u" is no part of the journal"_s, error);
  } else {
    within = path.substr(m_root.size() + 1);
  }
  if (m_folders.contains(path) || m_checksums.contains(path)) return damaged(shown(path) + u" is in it twice"_s, error);
  const std::string above = within.empty() ? std::string() : path.substr(0, path.find_last_of('/'));
  if (!above.empty() && !m_folders.contains(above)) return damaged(shown(path) + u" has no folder"_s, error);
  const auto members = static_cast<qint64>(m_folders.size() + m_checksums.size());
  constexpr qint64 fewFiles = 100'000;
  return members <= mostOf(m_manifest.files, fewFiles) || damaged(u"there is more in it than it says"_s, error);
}

bool BackupReader::readFile(const std::string& path, const std::string& within, Visitor& visitor, Error* error) {
  const qint64 size = archive_entry_size(m_entry);
  const time_t modified = archive_entry_mtime(m_entry);
  if (size > mostOf(m_manifest.bytes, 64 * mebibyte) - m_bytes)
    return damaged(u"there is more in it than it says"_s, error);
  m_bytes += size;
  QCryptographicHash hash(QCryptographicHash::Sha256);
  const auto take = [&](QByteArrayView part) {
    hash.addData(part);
    return visitor.data(part, error);
  };
  if (!visitor.beginFile(within, size, error) || !readData(size, take, error)) return false;
  m_checksums[path] = hash.result();
  return visitor.endFile(within, modified, error);
}

bool BackupReader::readMember(Visitor& visitor, Error* error) {
  const bool isFolder = archive_entry_filetype(m_entry) == AE_IFDIR;
  std::string path = archive_entry_pathname(m_entry);
  if (isFolder && path.ends_with('/')) path.pop_back();
  std::string within;
  if (!checkPlace(path, isFolder, within, error)) return false;
  if (!isFolder) return readFile(path, within, visitor, error);
  m_folders.insert(path);
  return within.empty() || visitor.folder(within, error);
}

bool BackupReader::checkSums(Error* error) {
  const qint64 size = archive_entry_size(m_entry);
  if (archive_entry_filetype(m_entry) != AE_IFREG || size > largestChecksums)
    return damaged(shown(archive_entry_pathname(m_entry)) + u" cannot be so large"_s, error);
  ChecksumTextReader reader;
  QCryptographicHash hash(QCryptographicHash::Sha256);
  size_t count = 0;
  QString fault;
  const auto check = [&](const std::string& path, const QByteArray& digest) {
    const auto found = m_checksums.find(path);
    if (found == m_checksums.end())
      fault = shown(path) + u" is missing"_s;
    else if (found->second != digest)
      fault = shown(path) + u" is not what was saved"_s;
    ++count;
    return fault.isEmpty();
  };
  const auto unreadable = [&] { return damaged(fault.isEmpty() ? u"its checksums cannot be read"_s : fault, error); };
  const auto take = [&](QByteArrayView part) {
    hash.addData(part);
    return reader.read(part, check) || unreadable();
  };
  if (!readData(size, take, error)) return false;
  if (!reader.isAtEndOfLine()) return unreadable();
  m_digestOfChecksums = hash.result();
  return count == m_checksums.size() || damaged(u"not every file has a checksum"_s, error);
}

bool BackupReader::readAll(Visitor& visitor, const Progress& progress, Error* error) {
  m_progress = progress;
  // Each turn takes a member, of which an archive has as many as its manifest announces, and some.
  while (true) {
    const Step step = nextHeader(error);
    if (step == Step::Failed || !advance(error)) return false;
    if (step == Step::End) return damaged(u"its end is missing"_s, error);
    if (std::string_view(archive_entry_pathname(m_entry)) == BackupMember::checksums) break;
    if (!readMember(visitor, error)) return false;
  }
  if (!checkSums(error)) return false;
  if (m_root.empty()) return damaged(u"it does not have a journal in it"_s, error);
  const Step step = nextHeader(error);
  return step == Step::End || (step == Step::Member && damaged(u"there is something behind its end"_s, error));
}

}  // namespace quillo
