#pragma once

#include "foundation/Error.h"
#include "qlcore/index/IndexedEntry.h"
#include "qlcore/index/JournalFolderWatcher.h"
#include "qlcore/index/JournalQuestion.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <any>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace quillo {

class JournalIndexWorker;

// The index of a journal for a program with an event loop: in a thread of its own it keeps the index up to date with
// the files, whoever changes them, and answers questions. All functions are for the thread that made the object, in
// which answers and signals arrive too.
class JournalIndexService : public QObject {
  Q_OBJECT

 public:
  using AnswerCallback = std::function<void(const JournalAnswer&)>;
  using CountsCallback = std::function<void(const QList<JournalCount>&)>;
  using EntryCallback = std::function<void(const std::optional<IndexedEntry>&)>;
  using DamagedCallback = std::function<void(const QList<IndexedDamage>&)>;
  using ConflictsCallback = std::function<void(const QList<ConflictedEntry>&)>;

  explicit JournalIndexService(const JournalSearchIndex::Options& options = {}, QObject* parent = nullptr);
  // Ends the thread, at the next entry where it is reading.
  ~JournalIndexService() override;

  // Whose index it is from now on; nothing closes it and gives back all that it takes.
  void setJournal(const std::optional<QUrl>& url);
  [[nodiscard]] const std::optional<QUrl>& journal() const { return m_journal; }

  // Answers with what is known now, and again whenever that has changed, until `asker` asks something else, is gone, or
  // is forgotten. What it had asked before and is not answered yet is dropped.
  void ask(QObject* asker, const JournalQuestion& question, const AnswerCallback& callback);
  // The same for counts, of each kind by itself.
  void count(QObject* asker, const JournalQuestion& question, JournalCountBy by, const CountsCallback& callback);
  // One entry as it is known now, once.
  void entry(QObject* asker, const QString& uuid, const EntryCallback& callback);
  // The files that cannot be read, as they are known now, once.
  void damaged(QObject* asker, const DamagedCallback& callback);
  // Entries of which there are conflict copies, as they are known now, once. What nobody has to decide is done without
  // asking, a moment after it was found.
  void conflicts(QObject* asker, const ConflictsCallback& callback);
  void forget(const QObject* asker);

  // A save or deletion of one's own: seen in answers without waiting for the file system to tell.
  void noteChanged(const QString& uuid);
  // Compares all files anew, as when a window comes to the front and isWatching() is false; then it tries to watch
  // again.
  void compare();

  // False until all files have been compared, and while that is going on.
  [[nodiscard]] bool isUpToDate() const { return m_isUpToDate; }
  // Whether changes of other programs are noticed by themselves.
  [[nodiscard]] bool isWatching() const { return m_watcher && m_watcher->isWatching(); }
  // Why the journal cannot be read; nothing where it can.
  [[nodiscard]] const std::optional<Error>& error() const { return m_error; }

 Q_SIGNALS:
  // Something in the journal is not as it was; whoever has asked is answered again.
  void changed();
  // Entries are being read: so many of so many.
  void progressed(qsizetype done, qsizetype total);
  // isUpToDate() or error() has changed.
  void stateChanged();

 private:
  // Who asked and what kind of thing: a question, a kind of count or an entry.
  using Key = std::pair<const QObject*, int>;
  struct Request {
    quint64 number{0};
    QPointer<QObject> asker;
    std::function<std::any(JournalSearchIndex&)> work;  // in the index's thread
    std::function<void(const std::any&)> deliver;       // in this one
    bool isOnce{false};
  };
  void begin();
  void watch(const QUrl& journal);
  void request(QObject* asker, int kind, Request request);
  void post(const Key& key);
  void answered(const Key& key, quint64 number, const std::any& answer);
  void takeState(bool isUpToDate, const std::optional<Error>& error, bool hasNews);

  JournalSearchIndex::Options m_options;
  std::optional<QUrl> m_journal;
  QTimer m_beginning;
  std::unique_ptr<JournalFolderWatcher> m_watcher;
  std::unique_ptr<JournalIndexWorker> m_worker;
  QHash<Key, Request> m_requests;
  quint64 m_lastNumber{0};
  quint64 m_opening{0};  // one for each journal that was set
  bool m_isUpToDate{false};
  std::optional<Error> m_error;
};

}  // namespace quillo
