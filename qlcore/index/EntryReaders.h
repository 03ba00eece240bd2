#pragma once

#include "qlcore/JournalFolder.h"
#include "qlcore/index/EntryRecord.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace quillo {

// Reads many files of entries in threads of its own and hands over what they hold, in no order. What is read and not
// taken yet is bounded, so that a journal of any size takes little memory.
class EntryReaders {
 public:
  // `folder` and `descriptor`, which are the same folder, `prefixes` and `copies` must outlive the object.
  EntryReaders(const JournalFolder& folder, int descriptor, const CommonPrefixes& prefixes, const CopyNames& copies,
               std::vector<QByteArray> names, unsigned threads);
  // Stops reading.
  ~EntryReaders();
  EntryReaders(const EntryReaders&) = delete;
  EntryReaders& operator=(const EntryReaders&) = delete;

  // What has been read, at least one; waits for it. Empty when all was handed over.
  [[nodiscard]] std::vector<FileReading> take();

 private:
  void run();
  void hand(std::vector<FileReading>& readings, qsizetype bytes);

  const JournalFolder& m_folder;
  int m_descriptor;
  const CommonPrefixes& m_prefixes;
  const CopyNames& m_copies;
  std::vector<QByteArray> m_names;
  std::atomic<size_t> m_next{0};
  std::atomic<bool> m_isStopped{false};

  std::mutex m_mutex;
  std::condition_variable m_isRead;
  std::condition_variable m_hasRoom;
  std::vector<FileReading> m_read;
  qsizetype m_bytes{0};  // of m_read
  unsigned m_running{0};
  std::vector<std::jthread> m_threads;
};

}  // namespace quillo
