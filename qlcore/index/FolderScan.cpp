#include "qlcore/index/FolderScan.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>

namespace quillo {

namespace {

// What a thread takes at a time: enough that taking costs nothing.
constexpr size_t portion = 512;

}  // namespace

FolderScan::FolderScan(int folder, unsigned threads) : m_folder(folder) {
  try {
    m_thread.emplace([this, threads] { run(threads); });
  } catch (const std::system_error&) {
    run(1);  // no more threads are to be had
  }
}

bool FolderScan::wait() {
  if (m_thread && m_thread->joinable()) m_thread->join();
  return m_errno == 0;
}

void FolderScan::run(unsigned threads) {
  m_errno = readNames();
  if (m_errno == 0) stampEntries(threads);
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
    const std::string_view name(entry->d_name);
    if (name.starts_with('.') || !name.ends_with(".plist")) continue;
    if (const auto key = EntryFileKey::fromName(name.data(), name.size()))
      m_entries.push_back({*key, {}});
    else
      m_others.insert(QByteArray(name.data(), static_cast<qsizetype>(name.size())), {});
  }
}

void FolderScan::stampEntries(unsigned threads) {
  // A folder that changes while it is read may show a name twice.
  std::sort(m_entries.begin(), m_entries.end(),
            [](const StampedFile& a, const StampedFile& b) { return a.key < b.key; });
  m_entries.erase(std::unique(m_entries.begin(), m_entries.end(),
                              [](const StampedFile& a, const StampedFile& b) { return a.key == b.key; }),
                  m_entries.end());
  std::atomic<size_t> next{0};
  const auto work = [this, &next] {
    for (size_t from = next.fetch_add(portion); from < m_entries.size(); from = next.fetch_add(portion))
      for (size_t i = from; i < std::min(from + portion, m_entries.size()); ++i) {
        StampedFile& file = m_entries[i];
        const bool hasOther = file.key.isLowerCase && i > 0 && m_entries[i - 1].key.uuid == file.key.uuid;
        if (!hasOther) file.stamp = EntryFileStamp::of(m_folder, file.key.fileName()).value_or(EntryFileStamp());
      }
  };
  {
    std::vector<std::jthread> helpers;
    try {
      for (unsigned i = 1; i < threads && i * portion < m_entries.size(); ++i) helpers.emplace_back(work);
    } catch (const std::system_error&) {
      // Those that run do all of it.
    }
    work();
  }
  for (auto other = m_others.begin(); other != m_others.end(); ++other)
    other.value() = EntryFileStamp::of(m_folder, other.key()).value_or(EntryFileStamp());
}

}  // namespace quillo
