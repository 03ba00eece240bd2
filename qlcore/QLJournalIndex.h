#pragma once

#include "foundation/Error.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace quillo {

class QLJournalPackageFile;

// An entry as the index knows it, by its place in the journal. A damaged entry has one too.
struct QLEntry {
  QString uuid;
  QUrl url;

  bool operator==(const QLEntry&) const = default;
};

// The entries of a package, read from disk when the index is made. An index and its package belong to one thread.
class QLJournalIndex {
 public:
  struct DamagedEntry {
    QUrl url;
    QString reason;
  };

  // Removes one file; false, with an error, when it cannot.
  using DeleteFileBlock = std::function<bool(const QUrl& url, Error* error)>;

  // Reads every entry. Damaged ones are logged and listed apart, and so is the folder of entries where it cannot be
  // read, of which readError() tells too; a folder that is missing holds no entries. A null package has none either.
  // Conflict copies of entries, see JournalConflicts, are neither. Asked to stop, the index holds what was read until
  // then.
  explicit QLJournalIndex(std::shared_ptr<QLJournalPackageFile> package, const std::stop_token& stop = {});
  // An index that reads nothing and lists nothing: enough to delete an entry whose place is known.
  static QLJournalIndex unread(std::shared_ptr<QLJournalPackageFile> package);

  // Newest first, by creation; entries of the same second by when they were last written.
  [[nodiscard]] const QList<std::shared_ptr<QLJournalEntryFile>>& entries() const { return m_entries; }
  [[nodiscard]] const QList<DamagedEntry>& damagedEntries() const { return m_damaged; }
  // Why the folder of entries could not be read, in one line with its path: what is listed is then not all there is.
  // Nothing where it could.
  [[nodiscard]] const std::optional<Error>& readError() const { return m_readError; }

  // The readable entry with this identifier, in any case of letters, or null.
  [[nodiscard]] std::shared_ptr<QLJournalEntryFile> entryFileWithUUID(const QString& uuid) const;
  // The entry with this identifier, readable or damaged.
  [[nodiscard]] std::optional<QLEntry> entryWithUUID(const QString& uuid) const;

  // Call the block for each file of the entry, its conflict copies first, and drop the entry from the index once they
  // are gone, also where the block's error is that there was no file. Answer what the block answered. An entry that was
  // never saved has no file; an entry of another journal is refused.
  bool deleteEntry(const QLEntry& entry, Error* error, const DeleteFileBlock& deleteFileBlock);
  bool deleteEntryFile(const std::shared_ptr<QLJournalEntryFile>& entryFile, Error* error,
                       const DeleteFileBlock& deleteFileBlock);

 private:
  QLJournalIndex() = default;
  void readEntries(const std::stop_token& stop);
  void addDamaged(const QString& path, const QString& reason);
  // The places where the file of an entry can be.
  [[nodiscard]] QList<QUrl> urlsOfEntry(const QString& canonicalUUID) const;
  [[nodiscard]] QList<QUrl> copiesOfEntry(const QString& canonicalUUID) const;

  std::shared_ptr<QLJournalPackageFile> m_package;
  QList<std::shared_ptr<QLJournalEntryFile>> m_entries;
  QList<DamagedEntry> m_damaged;
  std::optional<Error> m_readError;
};

}  // namespace quillo
