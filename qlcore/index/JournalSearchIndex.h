#pragma once

#include "foundation/Error.h"
#include "qlcore/conflicts/EntryVersions.h"
#include "qlcore/index/IndexedEntry.h"
#include "qlcore/index/JournalQuestion.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace quillo {

class QLJournalPackageFile;

// What is known of a journal's entries, in a database that can be asked quickly. It is a cache of the files: kept in
// the user's cache folder by the journal's identifier, thrown away where it is damaged or of another version, and kept
// in memory where it cannot be kept there: a journal on another file system is never copied out of it, and a cache
// folder that is full or read-only stops nobody.
//
// An object belongs to the thread that made it. Several programs may have the same index open at a time.
class JournalSearchIndex {
 public:
  struct Options {
    bool isInMemory{false};  // whatever the file systems say
    qint64 cacheKiB{4096};   // memory that the database may keep of what it has read
    unsigned readers{0};     // threads that read entries; 0: as many as the machine has processors
    QString cacheFolder{};   // in place of the user's; the index goes into its folder quillo/index
  };
  struct Progress {
    qsizetype done{0};
    qsizetype total{0};
  };
  // What bringing it up to date came to.
  struct Update {
    qsizetype changed{0};  // entries that are new, differ or are damaged now
    qsizetype removed{0};
    // Another program has brought it up to date meanwhile: what was asked before may have other answers.
    bool isFromOthers{false};
    bool isComplete{true};  // false: it was stopped, or files changed while they were read; call again
    // Why the folder of entries could not be read, where that is so. What was known of it is kept.
    std::optional<Error> error;

    [[nodiscard]] bool hasNews() const { return changed > 0 || removed > 0 || isFromOthers; }
  };
  // Called in the thread that brings up to date, a few times a second; what is done can be asked for already. While
  // files are only being looked at, more often, and with nothing of nothing.
  using ProgressCallback = std::function<void(const Progress&)>;

  // Opens the index of `package`, or makes an empty one. It holds what it held when it was last in use.
  explicit JournalSearchIndex(const QLJournalPackageFile& package);
  JournalSearchIndex(const QLJournalPackageFile& package, const Options& options);
  ~JournalSearchIndex();
  JournalSearchIndex(const JournalSearchIndex&) = delete;
  JournalSearchIndex& operator=(const JournalSearchIndex&) = delete;

  // Whether nothing of it is kept when it is closed.
  [[nodiscard]] bool isInMemory() const;

  // Compares the folder of entries with what is known and reads what differs. Asked to stop, it keeps what it has read.
  Update bringUpToDate(const std::stop_token& stop = {}, const ProgressCallback& progress = {});
  // The same for these files of the folder alone (names as "UUID.plist"): after a save of one's own, or where it is
  // known what changed.
  Update bringUpToDate(const QStringList& fileNames);

  // The entries that `question` finds.
  [[nodiscard]] JournalAnswer ask(const JournalQuestion& question);
  // How they are spread over days or months, in ascending order, or tags or places, the most frequent first and equally
  // frequent ones in alphabetical order. Order, offset and limit of the question play no part.
  [[nodiscard]] QList<JournalCount> counts(const JournalQuestion& question, JournalCountBy by);

  // One entry, with the beginning of its text as excerpt; nothing where it is not known or damaged.
  [[nodiscard]] std::optional<IndexedEntry> entryWithUUID(const QString& uuid);
  // The identifiers that begin with `prefix`, in any case of letters, those of damaged entries too; at most `limit`, in
  // ascending order.
  [[nodiscard]] QStringList uuidsWithPrefix(const QString& prefix, int limit);
  // Of the newest entry; nothing in an empty journal.
  [[nodiscard]] std::optional<QString> newestUUID();
  [[nodiscard]] QList<IndexedDamage> damagedEntries();
  // Entries of which there are conflict copies, by identifier; those whose own file is missing or damaged too.
  [[nodiscard]] QList<ConflictedEntry> conflicts();

  // Does a piece of what is left to do when nothing is asked: words of deleted entries leave the file, which becomes
  // quicker to search. False when nothing is left.
  bool tidyUp();

 private:
  class OpenIndex;
  std::unique_ptr<OpenIndex> m_open;
};

}  // namespace quillo
