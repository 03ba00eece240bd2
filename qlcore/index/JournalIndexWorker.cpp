#include "qlcore/index/JournalIndexWorker.h"

#include "foundation/Log.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <system_error>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// How long nothing is asked or changed before the index is tidied up, and before what a synchroniser left is looked at.
constexpr std::chrono::seconds quietTime{5};
static_assert(quietTime >= JournalConflicts::settlingTime);

}  // namespace

JournalIndexWorker::JournalIndexWorker(const QUrl& journal, const JournalSearchIndex::Options& options,
                                       Listener listener)
    : m_journal(journal), m_options(options), m_listener(std::move(listener)) {
  // Qt's threads have an event loop each, and end the program where there are no descriptors left for one.
  try {
    m_thread.emplace([this](const std::stop_token& stop) { run(stop); });
  } catch (const std::system_error& error) {
    QLLogInfo(u"The journal cannot be searched: %1"_s.arg(QString::fromLocal8Bit(error.what())));
  }
}

JournalIndexWorker::~JournalIndexWorker() {
  if (m_thread) m_thread->request_stop();
  m_thread.reset();
}

void JournalIndexWorker::post(const Key& key, Work work) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_work, [&key](const auto& item) { return item.first == key; });
  m_work.emplace_back(key, std::move(work));
  m_wakes.notify_all();
}

void JournalIndexWorker::cancel(const void* asker) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(m_work, [asker](const auto& item) { return item.first.first == asker; });
}

void JournalIndexWorker::compare() {
  const std::lock_guard lock(m_mutex);
  m_isToCompare = true;
  m_wakes.notify_all();
}

void JournalIndexWorker::compare(const QStringList& fileNames) {
  const std::lock_guard lock(m_mutex);
  m_toCompare.insert(fileNames.begin(), fileNames.end());
  m_wakes.notify_all();
}

void JournalIndexWorker::run(const std::stop_token& stop) {
  // Of this thread, and of those that it starts; the person who types comes first.
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), 5);
  open();
  while (!stop.stop_requested()) {
    doWork();
    {
      std::unique_lock lock(m_mutex);
      const auto isNeeded = [this] { return !m_work.empty() || m_isToCompare || !m_toCompare.empty(); };
      // Tidying up waits for some quiet, everything else for something to do.
      const bool isForQuiet = m_index && (m_isUntidy || m_mayHaveConflicts);
      const bool isQuiet = isForQuiet && !m_wakes.wait_for(lock, stop, quietTime, isNeeded);
      if (!isQuiet) m_wakes.wait(lock, stop, isNeeded);
      if (stop.stop_requested()) break;
      if (isQuiet) {
        lock.unlock();
        settleConflicts(stop);
        // A few milliseconds each; whoever asks meanwhile comes next.
        while (!stop.stop_requested() && (m_isUntidy = m_index->tidyUp())) doWork();
        continue;
      }
    }
    doWork();
    bringUpToDate(stop);
  }
  m_index.reset();
}

void JournalIndexWorker::open() {
  Error error;
  const auto package = QLJournalPackageFile::openPackage(m_journal, /*create=*/false, &error);
  m_error = package ? std::nullopt : std::optional(error);
  if (package) m_entriesFolder = package->entriesFolder();
  if (package) m_index = std::make_unique<JournalSearchIndex>(*package, m_options);
}

void JournalIndexWorker::doWork() {
  while (m_index) {
    Work work;
    {
      const std::lock_guard lock(m_mutex);
      if (m_work.empty()) return;
      work = std::move(m_work.front().second);
      m_work.pop_front();
    }
    work(*m_index);
  }
}

void JournalIndexWorker::bringUpToDate(const std::stop_token& stop) {
  std::set<QString> names;
  bool isAll = false;
  {
    const std::lock_guard lock(m_mutex);
    isAll = std::exchange(m_isToCompare, false);
    names = std::exchange(m_toCompare, {});
  }
  if (!isAll && names.empty()) return;
  // A journal that could not be opened may have come back.
  if (!m_index) open();
  if (!m_index) return m_listener.stateChanged(false, m_error, false);
  bool hasTold = false;
  JournalSearchIndex::Update update;
  if (isAll) {
    m_listener.stateChanged(false, m_error, false);
    update = m_index->bringUpToDate(stop, [&](const JournalSearchIndex::Progress& progress) {
      if (progress.done < progress.total) {
        m_listener.progressed(progress);
        // The first entries are shown while the others are read.
        if (!std::exchange(hasTold, true)) m_listener.stateChanged(false, m_error, true);
      }
      doWork();
    });
    // What a comparison of all files took lies between what is still used, and goes back to the system only when it is
    // told: 130 MiB with 100,000 entries.
    ::malloc_trim(0);
  } else {
    update = m_index->bringUpToDate(QStringList(names.begin(), names.end()));
    // A file that is being written to is told of again.
    update.isComplete = true;
  }
  m_error = update.error;
  m_isUntidy = m_isUntidy || update.hasNews();
  m_mayHaveConflicts = m_mayHaveConflicts || update.hasNews();
  m_listener.stateChanged(update.isComplete, m_error, update.hasNews());
}

// What needs nobody's decision. What changes is told by the files themselves, or noticed with the next comparison.
void JournalIndexWorker::settleConflicts(const std::stop_token& stop) {
  if (!std::exchange(m_mayHaveConflicts, false)) return;
  const JournalConflicts conflicts(m_entriesFolder);
  QStringList changed;
  for (const ConflictedEntry& entry : m_index->conflicts()) {
    if (stop.stop_requested()) return;
    Error error;
    const auto settled = conflicts.settle(entry, &error);
    if (!settled) QLLogInfo(u"Versions of an entry stay as they are - "_s + error.localizedDescription);
    if (settled && settled->isSomething()) changed << entry.copies << QLJournalEntryFile::fileName(entry.uuid);
  }
  if (!changed.isEmpty()) compare(changed);
}

}  // namespace quillo
