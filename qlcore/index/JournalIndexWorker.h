#pragma once

#include "foundation/Error.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QUrl>

#include <any>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <utility>

namespace quillo {

// The thread in which a JournalIndexService has its index. What it tells, it tells from that thread.
class JournalIndexWorker {
 public:
  struct Listener {
    std::function<void(bool isUpToDate, const std::optional<Error>& error, bool hasNews)> stateChanged;
    std::function<void(const JournalSearchIndex::Progress&)> progressed;
  };
  using Key = std::pair<const void*, int>;
  using Work = std::function<void(JournalSearchIndex&)>;

  // Opens the journal; its index is brought up to date when compare() is called.
  JournalIndexWorker(const QUrl& journal, const JournalSearchIndex::Options& options, Listener listener);
  // Stops at the next entry and waits for that.
  ~JournalIndexWorker();
  JournalIndexWorker(const JournalIndexWorker&) = delete;
  JournalIndexWorker& operator=(const JournalIndexWorker&) = delete;

  // Does the work soon, in the order in which it was posted, also while entries are being read; what waits under the
  // same key is dropped.
  void post(const Key& key, Work work);
  void cancel(const void* asker);
  // To be compared: everything, or these files.
  void compare();
  void compare(const QStringList& fileNames);

 private:
  void run(const std::stop_token& stop);
  void open();
  void doWork();
  void bringUpToDate(const std::stop_token& stop);
  void settleConflicts(const std::stop_token& stop);

  QUrl m_journal;
  JournalSearchIndex::Options m_options;
  Listener m_listener;
  std::unique_ptr<JournalSearchIndex> m_index;  // of the thread
  std::optional<Error> m_error;                 // of the thread: why there is no index, or its folder is not read
  bool m_isUntidy{true};                        // of the thread
  bool m_mayHaveConflicts{true};                // of the thread: some that nobody has to decide
  QString m_entriesFolder;                      // of the thread

  std::mutex m_mutex;
  std::condition_variable_any m_wakes;
  std::deque<std::pair<Key, Work>> m_work;
  bool m_isToCompare{false};
  std::set<QString> m_toCompare;
  std::optional<std::jthread> m_thread;
};

}  // namespace quillo
