#pragma once

#include "foundation/FileDescriptor.h"
#include "qlcore/index/EntryFileStamp.h"

#include <QByteArray>
#include <QHash>

#include <chrono>
#include <optional>
#include <semaphore>
#include <thread>
#include <vector>

namespace quillo {

class KnownFiles;

// The names of a folder of entries and what the file system says of each, taken in threads of their own: the folder's
// names in one go, then one call a file. No file is opened.
class FolderScan {
 public:
  // `folder` must stay open as long as the object lives. `threads` look at the files.
  FolderScan(int folder, unsigned threads) : m_folder(folder), m_threads(threads) {}
  FolderScan(const FolderScan&) = delete;
  FolderScan& operator=(const FolderScan&) = delete;

  // Once, one of them: the second where the folder's names are known to be those of `names`, so that they need not be
  // read.
  void start() { start(/*hasNames=*/false); }
  void start(const KnownFiles& names);
  // Waits for the end, for so long at most; false when it has not come.
  [[nodiscard]] bool waitFor(std::chrono::milliseconds time);
  // The same without limit. False where the folder could not be read; errnoNumber() says why.
  bool wait();
  [[nodiscard]] int errnoNumber() const { return m_errno; }

  // Sorted by key. A file in lower case beside one in upper case has a stamp that no file has.
  [[nodiscard]] const std::vector<StampedFile>& entries() const { return m_entries; }
  // Property lists with other names, those of conflict copies among them; temporary files are passed by.
  [[nodiscard]] const QHash<QByteArray, EntryFileStamp>& others() const { return m_others; }

 private:
  void start(bool hasNames);
  void run(bool hasNames, unsigned threads);
  [[nodiscard]] int readNames();
  void addName(const char* name, size_t length, quint64 inode);
  void takeNames(const KnownFiles& names);
  void sortEntries();
  void stampAll(unsigned threads);
  void stampEntry(int folder, size_t number);
  [[nodiscard]] std::vector<quint32> numbersByInode() const;

  int m_folder;
  unsigned m_threads;
  int m_errno{0};
  std::vector<StampedFile> m_entries;
  QHash<QByteArray, EntryFileStamp> m_others;
  std::binary_semaphore m_isDone{0};
  std::optional<std::jthread> m_thread;
};

}  // namespace quillo
