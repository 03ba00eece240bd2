#include "qlcore/FolderCopy.h"

#include "foundation/FileDescriptor.h"
#include "foundation/FolderOperations.h"
#include "qlcore/JournalError.h"

#include <QCryptographicHash>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t bufferSize = size_t{256} * 1024;
// A small file takes about as long as this many bytes of a large one, and as much room.
constexpr qint64 costOfFile = 4096;
constexpr auto digestKind = QCryptographicHash::Blake2b_256;

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

bool readFailed(Error* error, int number, const std::string& path) {
  return fail(error,
              JournalError::make(JournalError::NotReadable, fileReadError(number, shown(path)).localizedDescription));
}

bool writeFailed(Error* error, int number, const std::string& path) {
  return fail(error, JournalError::forWriting(fileWriteError(number, shown(path))));
}

std::string nameOf(const std::string& path) {
  return path.substr(path.find_last_of('/') + 1);
}

// A hidden name beside `path`, by which no reader finds the half of a file.
std::string temporaryFor(const std::string& path) {
  const std::string name = nameOf(path);
  return path.substr(0, path.size() - name.size()) + "." + name + "." + std::to_string(::getpid()) + ".copy";
}

// Bytes read, 0 at the end, or -1 with errno.
ssize_t readSome(int descriptor, char* buffer) {
  ssize_t count = 0;
  do count = ::read(descriptor, buffer, bufferSize);
  while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace

FolderCopy::FolderCopy(const QString& source, const QString& target)
    : m_source(QFile::encodeName(source).toStdString()), m_target(QFile::encodeName(target).toStdString()) {}

void FolderCopy::setTarget(const QString& target) {
  m_target = QFile::encodeName(target).toStdString();
}

bool FolderCopy::advance(qint64 bytes, Error* error) {
  m_done += bytes;
  if (m_progress && !m_progress(m_done, m_all)) m_isStopped = true;
  return !m_isStopped || fail(error, JournalError::make(JournalError::WriteFailed, u"the copying was stopped"_s));
}

bool FolderCopy::make(const Progress& progress, Error* error) {
  m_progress = progress;
  FolderFiles found;
  if (!scanFolder(m_source, found, error)) return false;
  qint64 bytes = 0;
  for (const auto& [path, stamp] : found) bytes += stamp.size + costOfFile;
  m_all = 2 * bytes;  // written, then read
  if (!hasRoomFor(std::filesystem::path(m_target).parent_path(), bytes, error)) return false;
  if (::mkdir(m_target.c_str(), 0700) != 0) return writeFailed(error, errno, m_target);
  for (const auto& [path, stamp] : found)
    if (!copyItem(path, stamp, error)) return false;
  if (!syncAll(error)) return false;
  for (const auto& [path, item] : m_items)
    if (!check(path, item, error)) return false;
  m_progress = {};
  m_syncsEach = true;
  return true;
}

bool FolderCopy::copyItem(const std::string& path, const FileStamp& stamp, Error* error) {
  Item item{.source = stamp, .copy = {}, .digest = {}};
  bool isCopied = false;
  if (S_ISDIR(stamp.mode)) {
    item.copy = stamp;
    isCopied = ::mkdir((m_target + '/' + path).c_str(), (stamp.mode & 0777) | 0700) == 0 || errno == EEXIST ||
               writeFailed(error, errno, m_target + '/' + path);
  } else if (S_ISLNK(stamp.mode)) {
    isCopied = copyLink(path, item, error);
  } else if (S_ISREG(stamp.mode)) {
    isCopied = copyFile(path, item, error);
  } else {
    return fail(error, JournalError::make(JournalError::NotReadable,
                                          shown(m_source + '/' + path) + u": neither a file nor a folder"_s));
  }
  if (!isCopied) return false;
  // One that was gone in the meantime has no stamp.
  if (item.source.mode != 0) m_items[path] = std::move(item);
  return advance(costOfFile, error);
}

bool FolderCopy::copyLink(const std::string& path, Item& item, Error* error) {
  std::error_code problem;
  const auto leadsTo = std::filesystem::read_symlink(m_source + '/' + path, problem);
  if (problem) return readFailed(error, problem.value(), m_source + '/' + path);
  const std::string target = m_target + '/' + path;
  ::unlink(target.c_str());
  if (::symlink(leadsTo.c_str(), target.c_str()) != 0) return writeFailed(error, errno, target);
  struct stat status {};
  if (::lstat(target.c_str(), &status) == 0) item.copy = FileStamp::of(status);
  return true;
}

bool FolderCopy::copyFile(const std::string& path, Item& item, Error* error) {
  const std::string source = m_source + '/' + path;
  const std::string target = m_target + '/' + path;
  const FileDescriptor from(::open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!from.isOpen() && errno == ENOENT) {
    item.source = {};
    return true;
  }
  struct stat status {};
  if (!from.isOpen() || ::fstat(from.number(), &status) != 0) return readFailed(error, errno, source);
  if (!S_ISREG(status.st_mode)) return readFailed(error, EINVAL, source);
  // From before the reading: what is written meanwhile is a change to be copied next.
  item.source = FileStamp::of(status);

  const std::string temporary = temporaryFor(target);
  FileDescriptor to(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!to.isOpen()) return writeFailed(error, errno, target);
  if (!writeContents(from.number(), to.number(), path, item, error)) {
    ::unlink(temporary.c_str());
    return false;
  }
  // The index of the journal knows the files by their times.
  const timespec times[] = {status.st_atim, status.st_mtim};
  struct stat written {};
  const bool isWhole = ::fchmod(to.number(), status.st_mode & 0777) == 0 && ::futimens(to.number(), times) == 0 &&
                       (!m_syncsEach || ::fsync(to.number()) == 0) && ::fstat(to.number(), &written) == 0 &&
                       to.close() && std::rename(temporary.c_str(), target.c_str()) == 0;
  if (!isWhole) {
    const int number = errno;
    ::unlink(temporary.c_str());
    return writeFailed(error, number, target);
  }
  item.copy = FileStamp::of(written);
  return true;
}

bool FolderCopy::writeContents(int from, int to, const std::string& path, Item& item, Error* error) {
  const auto buffer = std::make_unique<std::array<char, bufferSize>>();
  QCryptographicHash hash(digestKind);
  ssize_t count = 0;
  // As long as the file was when it was looked at: one that grows as fast as it is read would never end.
  for (qint64 left = item.source.size; left > 0 && (count = readSome(from, buffer->data())) > 0; left -= count) {
    const QByteArrayView bytes(buffer->data(), std::min<qint64>(count, left));
    hash.addData(bytes);
    if (const int number = writeAll(to, bytes)) return writeFailed(error, number, m_target + '/' + path);
    if (!advance(bytes.size(), error)) return false;
  }
  if (count < 0) return readFailed(error, errno, m_source + '/' + path);
  item.digest = hash.result();
  return true;
}

// Everything in one go, which is much faster than file by file.
bool FolderCopy::syncAll(Error* error) {
  const FileDescriptor folder(::open(m_target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return writeFailed(error, errno, m_target);
  if (::syncfs(folder.number()) != 0) return writeFailed(error, errno, m_target);
  return true;
}

bool FolderCopy::check(const std::string& path, const Item& item, Error* error) {
  if (!S_ISREG(item.source.mode)) return advance(costOfFile, error);
  const std::string copy = m_target + '/' + path;
  const FileDescriptor file(::open(copy.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!file.isOpen()) return readFailed(error, errno, copy);
  // From the disk, and not from what the kernel remembers to have written.
  ::posix_fadvise(file.number(), 0, 0, POSIX_FADV_DONTNEED);
  const auto buffer = std::make_unique<std::array<char, bufferSize>>();
  QCryptographicHash hash(digestKind);
  ssize_t count = 0;
  // Ends with the file, which nobody else writes to.
  while ((count = readSome(file.number(), buffer->data())) > 0) {
    hash.addData(QByteArrayView(buffer->data(), count));
    if (!advance(count, error)) return false;
  }
  if (count < 0) return readFailed(error, errno, copy);
  if (!advance(costOfFile, error)) return false;
  if (hash.result() == item.digest) return true;
  return fail(error,
              JournalError::make(JournalError::WriteFailed,
                                 shown(copy) + u": what is there is not what was written; the disk may be bad"_s));
}

// Whether nobody else has touched what is by that name in the copy; null for what should not be there.
bool FolderCopy::isAsCopied(const std::string& path, const Item* item) const {
  struct stat status {};
  if (::lstat((m_target + '/' + path).c_str(), &status) != 0) return !item;
  return item && FileStamp::of(status) == item->copy;
}

bool FolderCopy::removeItem(const std::string& path, const Item& item, Error* error) {
  const std::string copy = m_target + '/' + path;
  if (S_ISDIR(item.source.mode)) {
    // What others have put into it stays, and so does the folder.
    return ::rmdir(copy.c_str()) == 0 || errno == ENOENT || errno == ENOTEMPTY || errno == EEXIST ||
           writeFailed(error, errno, copy);
  }
  return ::unlink(copy.c_str()) == 0 || errno == ENOENT || writeFailed(error, errno, copy);
}

// What is in a folder before the folder itself.
bool FolderCopy::removeWhatIsGone(const FolderFiles& found, Error* error) {
  std::vector<std::string> gone;
  for (auto it = m_items.rbegin(); it != m_items.rend(); ++it)
    if (const auto there = found.find(it->first);
        there == found.end() || (there->second.mode & S_IFMT) != (it->second.source.mode & S_IFMT))
      gone.push_back(it->first);
  for (const std::string& path : gone) {
    ++m_changes;
    const Item& item = m_items[path];
    if ((S_ISDIR(item.source.mode) || isAsCopied(path, &item)) && !removeItem(path, item, error)) return false;
    m_items.erase(path);
  }
  return true;
}

bool FolderCopy::bringUpToDate(Error* error) {
  m_changes = 0;
  FolderFiles found;
  if (!scanFolder(m_source, found, error) || !removeWhatIsGone(found, error)) return false;
  std::vector<std::string> copied;
  for (const auto& [path, stamp] : found) {
    const auto known = m_items.find(path);
    if (known != m_items.end() && known->second.source == stamp) continue;
    ++m_changes;
    if (S_ISDIR(stamp.mode) || isAsCopied(path, known == m_items.end() ? nullptr : &known->second)) {
      if (!copyItem(path, stamp, error)) return false;
      copied.push_back(path);
    } else {
      m_conflicts << QByteArray::fromStdString(path);
      m_items[path].source = stamp;
    }
  }
  std::set<std::string> folders;
  for (const std::string& path : copied) folders.insert(std::filesystem::path(m_target + '/' + path).parent_path());
  for (const std::string& folder : folders)
    if (const int number = syncFolder(shown(folder))) return writeFailed(error, number, folder);
  for (const std::string& path : copied)
    if (const auto item = m_items.find(path); item != m_items.end() && !check(path, item->second, error)) return false;
  return true;
}

}  // namespace quillo
