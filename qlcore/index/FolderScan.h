#pragma once

#include "foundation/FileDescriptor.h"
#include "qlcore/index/EntryFileStamp.h"

#include <QByteArray>
#include <QHash>

#include <optional>
#include <thread>
#include <vector>

namespace quillo {

// The names of a folder of entries and what the file system says of each, taken in threads of their own: the folder's
// names in one go, then one call a file. No file is opened.
class FolderScan {
 public:
  // `folder` must stay open as long as the object lives. `threads` look at the files.
  FolderScan(int folder, unsigned threads);

  // Waits for the end. False where the folder could not be read; errnoNumber() says why.
  bool wait();
  [[nodiscard]] int errnoNumber() const { return m_errno; }

  // Sorted by key. A file in lower case beside one in upper case has a stamp that no file has.
  [[nodiscard]] const std::vector<StampedFile>& entries() const { return m_entries; }
  // Property lists with other names.
  [[nodiscard]] const QHash<QByteArray, EntryFileStamp>& others() const { return m_others; }

 private:
  void run(unsigned threads);
  [[nodiscard]] int readNames();
  void stampEntries(unsigned threads);

  int m_folder;
  int m_errno{0};
  std::vector<StampedFile> m_entries;
  QHash<QByteArray, EntryFileStamp> m_others;
  std::optional<std::jthread> m_thread;
};

}  // namespace quillo
