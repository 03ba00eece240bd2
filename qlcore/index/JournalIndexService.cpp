#include "qlcore/index/JournalIndexService.h"

#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/index/JournalIndexWorker.h"

#include <QDir>

#include <algorithm>
#include <chrono>

namespace quillo {

namespace {

// Kinds of requests beside those of JournalCountBy.
constexpr int askKind = -1;
constexpr int entryKind = -2;
constexpr int damagedKind = -3;
constexpr int conflictsKind = -4;

// Whoever opens a journal asks something first and shows the answer. It is not to wait for the folder's being watched
// and all files' being compared, which takes a while with very many.
constexpr std::chrono::milliseconds firstQuestionTime{200};
constexpr std::chrono::milliseconds showingTime{25};

}  // namespace

JournalIndexService::JournalIndexService(const JournalSearchIndex::Options& options, QObject* parent)
    : QObject(parent), m_options(options) {
  m_beginning.setSingleShot(true);
  connect(&m_beginning, &QTimer::timeout, this, &JournalIndexService::begin);
}

JournalIndexService::~JournalIndexService() = default;

void JournalIndexService::setJournal(const std::optional<QUrl>& url) {
  if (url == m_journal) return;
  m_worker.reset();
  m_watcher.reset();
  m_beginning.stop();
  m_journal = url;
  ++m_opening;
  takeState(false, std::nullopt, false);
  if (!url) return;
  // Both come through the event loop; what a former worker told is not heard any more.
  const quint64 opening = m_opening;
  const auto inThisThread = [this, opening](auto work) {
    QMetaObject::invokeMethod(
        this,
        [this, opening, work] {
          if (opening == m_opening) work();
        },
        Qt::QueuedConnection);
  };
  JournalIndexWorker::Listener listener;
  listener.stateChanged = [this, inThisThread](bool isUpToDate, const std::optional<Error>& error, bool hasNews) {
    inThisThread([this, isUpToDate, error, hasNews] { takeState(isUpToDate, error, hasNews); });
  };
  listener.progressed = [this, inThisThread](const JournalSearchIndex::Progress& progress) {
    inThisThread([this, progress] { Q_EMIT progressed(progress.done, progress.total); });
  };
  m_worker = std::make_unique<JournalIndexWorker>(*url, m_options, std::move(listener));
  for (auto request = m_requests.begin(); request != m_requests.end(); ++request) {
    // Answers of the former journal may be on their way.
    request->number = ++m_lastNumber;
    post(request.key());
  }
  m_beginning.start(firstQuestionTime);
}

// Watched first: what changes while it is read is told.
void JournalIndexService::begin() {
  if (!m_watcher) watch(*m_journal);
  m_worker->compare();
}

void JournalIndexService::watch(const QUrl& journal) {
  m_watcher = std::make_unique<JournalFolderWatcher>(QDir::cleanPath(journal.toLocalFile()));
  connect(m_watcher.get(), &JournalFolderWatcher::folderChanged, this, [this] {
    if (m_worker) m_worker->compare();
  });
  connect(m_watcher.get(), &JournalFolderWatcher::filesChanged, this, [this](const QStringList& names) {
    if (m_worker) m_worker->compare(names);
  });
}

void JournalIndexService::takeState(bool isUpToDate, const std::optional<Error>& error, bool hasNews) {
  const bool isOther = isUpToDate != m_isUpToDate || error.has_value() != m_error.has_value();
  m_isUpToDate = isUpToDate;
  m_error = error;
  if (isOther) Q_EMIT stateChanged();
  if (!hasNews) return;
  m_requests.removeIf([](const auto& request) { return !request.value().asker; });
  for (auto request = m_requests.cbegin(); request != m_requests.cend(); ++request) post(request.key());
  Q_EMIT changed();
}

void JournalIndexService::request(QObject* asker, int kind, Request request) {
  const Key key{asker, kind};
  request.number = ++m_lastNumber;
  request.asker = asker;
  m_requests.insert(key, request);
  post(key);
  // Where nobody tells of changes, they are looked for when somebody wants to know.
  if (m_worker && m_isUpToDate && !isWatching()) m_worker->compare();
}

void JournalIndexService::post(const Key& key) {
  if (!m_worker) return;
  const Request& request = m_requests[key];
  m_worker->post(key, [this, key, number = request.number, work = request.work](JournalSearchIndex& index) {
    const std::any answer = work(index);
    QMetaObject::invokeMethod(
        this, [this, key, number, answer] { answered(key, number, answer); }, Qt::QueuedConnection);
  });
}

void JournalIndexService::answered(const Key& key, quint64 number, const std::any& answer) {
  const auto found = m_requests.constFind(key);
  if (found == m_requests.constEnd() || found->number != number) return;
  const Request request = m_requests.value(key);
  if (!request.asker || request.isOnce) m_requests.remove(key);
  // Whoever asked shows the answer first.
  if (m_beginning.isActive() && m_beginning.intervalAsDuration() > showingTime) m_beginning.start(showingTime);
  // What is called may ask again.
  if (request.asker) request.deliver(answer);
}

void JournalIndexService::ask(QObject* asker, const JournalQuestion& question, const AnswerCallback& callback) {
  Request asked;
  asked.work = [question](JournalSearchIndex& index) -> std::any { return index.ask(question); };
  asked.deliver = [callback](const std::any& answer) { callback(std::any_cast<const JournalAnswer&>(answer)); };
  request(asker, askKind, std::move(asked));
}

void JournalIndexService::count(QObject* asker, const JournalQuestion& question, JournalCountBy by,
                                const CountsCallback& callback) {
  Request asked;
  asked.work = [question, by](JournalSearchIndex& index) -> std::any { return index.counts(question, by); };
  asked.deliver = [callback](const std::any& answer) { callback(std::any_cast<const QList<JournalCount>&>(answer)); };
  request(asker, static_cast<int>(by), std::move(asked));
}

void JournalIndexService::entry(QObject* asker, const QString& uuid, const EntryCallback& callback) {
  Request asked;
  asked.isOnce = true;
  asked.work = [uuid](JournalSearchIndex& index) -> std::any { return index.entryWithUUID(uuid); };
  asked.deliver = [callback](const std::any& answer) {
    callback(std::any_cast<const std::optional<IndexedEntry>&>(answer));
  };
  request(asker, entryKind, std::move(asked));
}

void JournalIndexService::damaged(QObject* asker, const DamagedCallback& callback) {
  Request asked;
  asked.isOnce = true;
  asked.work = [](JournalSearchIndex& index) -> std::any { return index.damagedEntries(); };
  asked.deliver = [callback](const std::any& answer) { callback(std::any_cast<const QList<IndexedDamage>&>(answer)); };
  request(asker, damagedKind, std::move(asked));
}

void JournalIndexService::conflicts(QObject* asker, const ConflictsCallback& callback) {
  Request asked;
  asked.isOnce = true;
  asked.work = [](JournalSearchIndex& index) -> std::any { return index.conflicts(); };
  asked.deliver = [callback](const std::any& answer) {
    callback(std::any_cast<const QList<ConflictedEntry>&>(answer));
  };
  request(asker, conflictsKind, std::move(asked));
}

void JournalIndexService::forget(const QObject* asker) {
  m_requests.removeIf([asker](const auto& request) { return request.key().first == asker; });
  if (m_worker) m_worker->cancel(asker);
}

void JournalIndexService::noteChanged(const QString& uuid) {
  const auto canonical = QLJournalEntryFile::canonicalUUID(uuid);
  if (!canonical || !m_worker) return;
  const auto names = QLJournalEntryFile::fileNames(*canonical);
  m_worker->compare(QStringList(names.begin(), names.end()));
}

void JournalIndexService::compare() {
  if (!m_worker) return;
  // What the kernel had run out of may be there again.
  if (!isWatching() && m_journal) watch(*m_journal);
  m_worker->compare();
}

}  // namespace quillo
