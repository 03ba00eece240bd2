#include "qlcore/index/FolderScan.h"

#include "qlcore/ConflictNames.h"
#include "qlcore/index/KnownFiles.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <memory>
#include <numeric>
#include <system_error>

namespace quillo {

namespace {

// What a thread takes at a time: enough that taking costs nothing.
constexpr size_t portion = 512;

}  // namespace

void FolderScan::start(const KnownFiles& names) {
  takeNames(names);
  start(/*hasNames=*/true);
}

void FolderScan::start(bool hasNames) {
  try {
    m_thread.emplace([this, hasNames] {
      run(hasNames, m_threads);
      m_isDone.release();
    });
  } catch (const std::system_error&) {
    run(hasNames, 1);  // no more threads are to be had
    m_isDone.release();
  }
}

bool FolderScan::waitFor(std::chrono::milliseconds time) {
  if (!m_isDone.try_acquire_for(time)) return false;
  m_isDone.release();
  return true;
}

bool FolderScan::wait() {
  if (m_thread && m_thread->joinable()) m_thread->join();
  return m_errno == 0;
}

void FolderScan::run(bool hasNames, unsigned threads) {
  if (!hasNames) m_errno = readNames();
  if (m_errno != 0) return;
  sortEntries();
  stampAll(threads);
}

int FolderScan::readNames() {
  // A descriptor of its own: reading a folder moves the position that duplicates share.
  FileDescriptor own(::openat(m_folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!own.isOpen()) return errno;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(own.number()), ::closedir);
  if (!directory) return errno;
  static_cast<void>(own.release());  // closed with the directory now
  while (true) {
    errno = 0;
    const dirent* entry = ::readdir(directory.get());
    if (!entry) return errno;
    const QByteArrayView name(entry->d_name);
    if (ConflictNames::hasEnding(name)) addName(name.data(), static_cast<size_t>(name.size()), entry->d_ino);
  }
}

void FolderScan::addName(const char* name, size_t length, quint64 inode) {
  if (const auto key = EntryFileKey::fromName(name, length))
    m_entries.push_back({*key, {-1, 0, 0, inode}});
  else if (const QByteArray other(name, static_cast<qsizetype>(length));
           !ConflictNames::isTemporary(QFile::decodeName(other)))
    m_others.insert(other, {});
}

void FolderScan::takeNames(const KnownFiles& names) {
  m_entries.reserve(static_cast<size_t>(names.count() + names.damaged().size()));
  for (qsizetype i = 0; i < names.count(); ++i) m_entries.push_back(names.entry(i));
  for (auto file = names.damaged().cbegin(); file != names.damaged().cend(); ++file)
    addName(file.key().constData(), static_cast<size_t>(file.key().size()), file->inode);
  for (auto file = names.copies().cbegin(); file != names.copies().cend(); ++file) m_others.insert(file.key(), {});
}

void FolderScan::sortEntries() {
  const auto isBefore = [](const StampedFile& a, const StampedFile& b) { return a.key < b.key; };
  if (!std::is_sorted(m_entries.begin(), m_entries.end(), isBefore))
    std::sort(m_entries.begin(), m_entries.end(), isBefore);
  // A folder that changes while it is read may show a name twice.
  m_entries.erase(std::unique(m_entries.begin(), m_entries.end(),
                              [](const StampedFile& a, const StampedFile& b) { return a.key == b.key; }),
                  m_entries.end());
}

// The numbers of the entries, roughly in the order of their inodes: what the system keeps of neighbours lies together,
// on the disk and in memory, and looking at them takes a fifth less than in an order of chance.
std::vector<quint32> FolderScan::numbersByInode() const {
  std::vector<quint32> numbers(m_entries.size());
  if (m_entries.empty()) return numbers;
  const auto inode = [this](size_t number) { return m_entries[number].stamp.inode; };
  quint64 least = inode(0);
  quint64 most = least;
  for (size_t i = 0; i < m_entries.size(); ++i) {
    least = std::min(least, inode(i));
    most = std::max(most, inode(i));
  }
  // Sorted by their first digits alone, which takes no time to speak of.
  constexpr size_t digits = 14;
  const int shift = std::max(static_cast<int>(std::bit_width(most - least)) - static_cast<int>(digits), 0);
  std::vector<quint32> ends((size_t{1} << digits) + 1);
  for (size_t i = 0; i < m_entries.size(); ++i) ++ends[((inode(i) - least) >> shift) + 1];
  std::partial_sum(ends.begin(), ends.end(), ends.begin());
  for (size_t i = 0; i < m_entries.size(); ++i) numbers[ends[(inode(i) - least) >> shift]++] = static_cast<quint32>(i);
  return numbers;
}

void FolderScan::stampEntry(int folder, size_t number) {
  StampedFile& file = m_entries[number];
  file.stamp = {};
  const bool hasOther = file.key.isLowerCase && number > 0 && m_entries[number - 1].key.uuid == file.key.uuid;
  if (!hasOther) file.stamp = EntryFileStamp::of(folder, file.key.name().data()).value_or(EntryFileStamp());
}

void FolderScan::stampAll(unsigned threads) {
  const std::vector<quint32> numbers = numbersByInode();
  std::atomic<size_t> next{0};
  const auto work = [this, &numbers, &next] {
    // Of its own for each thread, which would else wait for each other at its count of users.
    const FileDescriptor own(::openat(m_folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const int folder = own.isOpen() ? own.number() : m_folder;
    for (size_t from = next.fetch_add(portion); from < numbers.size(); from = next.fetch_add(portion)) {
      const size_t end = std::min(from + portion, numbers.size());
      for (size_t i = from; i < end; ++i) {
        // They are far apart: fetched while the system looks at others.
        constexpr size_t ahead = 4;
        if (i + ahead < end) __builtin_prefetch(&m_entries[numbers[i + ahead]]);
        stampEntry(folder, numbers[i]);
      }
    }
  };
  {
    std::vector<std::jthread> helpers;
    try {
      for (unsigned i = 1; i < threads && i * portion < numbers.size(); ++i) helpers.emplace_back(work);
    } catch (const std::system_error&) {
      // Those that run do all of it.
    }
    work();
  }
  for (auto other = m_others.begin(); other != m_others.end(); ++other)
    other.value() = EntryFileStamp::of(m_folder, other.key()).value_or(EntryFileStamp());
}

}  // namespace quillo
