#include "qlcore/index/EntryReaders.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace quillo {

namespace {

// What a reader takes at a time.
constexpr size_t portion = 64;
// What may wait to be taken.
constexpr qsizetype mostBytes = qsizetype{8} * 1024 * 1024;

// Roughly, with all that belongs to it.
qsizetype bytesOf(const FileReading& reading) {
  constexpr qsizetype fixed = 1024;
  if (!reading.entry) return fixed;
  return fixed + reading.entry->text.size() + reading.entry->others.size() + reading.entry->words.text.size() +
         reading.entry->words.marks.size();
}

}  // namespace

EntryReaders::EntryReaders(const JournalFolder& folder, int descriptor, const CommonPrefixes& prefixes,
                           const CopyNames& copies, std::vector<QByteArray> names, unsigned threads)
    : m_folder(folder), m_descriptor(descriptor), m_prefixes(prefixes), m_copies(copies), m_names(std::move(names)) {
  // For a handful of files a thread costs more than it saves.
  const auto useful = static_cast<unsigned>(std::min<size_t>(threads, m_names.size() / portion));
  try {
    for (unsigned i = 0; i < useful; ++i) {
      const std::lock_guard lock(m_mutex);
      m_threads.emplace_back([this] { run(); });
      ++m_running;
    }
  } catch (const std::system_error&) {
    // Those that run do all of it; without any, take() reads by itself.
  }
}

EntryReaders::~EntryReaders() {
  m_isStopped = true;
  {
    const std::lock_guard lock(m_mutex);
    m_bytes = 0;
  }
  m_hasRoom.notify_all();
}

void EntryReaders::run() {
  EntryReader reader(m_folder, m_descriptor, m_prefixes, m_copies);
  std::vector<FileReading> readings;
  qsizetype bytes = 0;
  for (size_t from = m_next.fetch_add(portion); from < m_names.size() && !m_isStopped;
       from = m_next.fetch_add(portion)) {
    const size_t end = std::min(from + portion, m_names.size());
    for (size_t i = from; i < end && !m_isStopped; ++i) {
      readings.push_back(reader.read(m_names[i]));
      bytes += bytesOf(readings.back());
      // One large entry is handed over at once.
      if (bytes > mostBytes / 8) hand(readings, std::exchange(bytes, 0));
    }
    hand(readings, std::exchange(bytes, 0));
  }
  const std::lock_guard lock(m_mutex);
  --m_running;
  m_isRead.notify_all();
}

void EntryReaders::hand(std::vector<FileReading>& readings, qsizetype bytes) {
  std::unique_lock lock(m_mutex);
  m_hasRoom.wait(lock, [this] { return m_bytes < mostBytes || m_isStopped; });
  std::move(readings.begin(), readings.end(), std::back_inserter(m_read));
  readings.clear();
  m_bytes += bytes;
  m_isRead.notify_all();
}

std::vector<FileReading> EntryReaders::take() {
  if (m_threads.empty()) {
    std::vector<FileReading> readings;
    EntryReader reader(m_folder, m_descriptor, m_prefixes, m_copies);
    const size_t from = m_next.fetch_add(portion);
    for (size_t i = from; i < std::min(from + portion, m_names.size()); ++i)
      readings.push_back(reader.read(m_names[i]));
    return readings;
  }
  std::unique_lock lock(m_mutex);
  m_isRead.wait(lock, [this] { return !m_read.empty() || m_running == 0; });
  m_bytes = 0;
  m_hasRoom.notify_all();
  return std::exchange(m_read, {});
}

}  // namespace quillo
