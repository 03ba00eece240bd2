#pragma once

#include "foundation/Error.h"
#include "qlcore/TextMerge.h"
#include "qlcore/conflicts/EntryVersions.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace quillo {

class EntryAncestor;
class JournalFolder;

// The conflict copies in a journal: lists them, reads an entry's versions, and does with them what a person decides.
// Reads files and blocks: for a thread of its own where there is a window.
//
//   entries() or entry(uuid) -> read() -> keep(), keepAll() or keepMerged()
//
// Whatever is done is done under the journal's lock, and in steps of which each leaves every word in the journal or in
// the Trash: ended in between, it leaves the conflict or the outcome. Versions that give way go to the Trash, where
// each keeps a name by which it is a version again once it is put back. What was decided on versions that another
// program has changed since they were read is refused, and nothing is done. Errors are of JournalError::domain, but
// for what the Trash refuses, which is of the OS-status domain.
class JournalConflicts {
 public:
  // Longer than any synchroniser needs between moving a version aside and putting the other in its place; in between
  // the entry's file is missing, and nothing may be put there, since it would be written over.
  static constexpr std::chrono::seconds settlingTime{5};

  // Of the journal with this folder of entries. `ancestor`, where there is one, must outlive the object.
  explicit JournalConflicts(QString entriesFolder, EntryAncestor* ancestor = nullptr,
                            std::chrono::seconds orphansAfter = settlingTime);

  // All entries with conflict copies, by identifier; takes memory for these alone, and opens no file of them. Nothing,
  // with an error, where the folder cannot be read; a folder that is missing has none.
  [[nodiscard]] std::optional<QList<ConflictedEntry>> entries(Error* error) const;
  // One of them; without copies where there are none.
  [[nodiscard]] std::optional<ConflictedEntry> entry(const QString& uuid, Error* error) const;

  // What the files hold now. A copy that is gone is left out; all may be.
  [[nodiscard]] std::optional<EntryVersions> read(const ConflictedEntry& entry, Error* error) const;
  // The texts of all versions as one, to be looked at and changed by the person; see VersionMerge::texts().
  [[nodiscard]] MergedText merged(const EntryVersions& entry) const;

  // The version with the number `chosen` stays, all others go to the Trash. It must be whole.
  bool keep(const EntryVersions& entry, qsizetype chosen, Error* error) const;
  // Every whole copy becomes an entry of its own; `added`, where given, gets their identifiers. Damaged ones go to the
  // Trash. The identifiers are made of what the copies hold, so that the same decision on two machines is one.
  bool keepAll(const EntryVersions& entry, QStringList* added, Error* error) const;
  // The entry gets `text`, and beside it what all whole versions have; the versions go to the Trash.
  bool keepMerged(const EntryVersions& entry, const QString& text, Error* error) const;

  // What was done without asking.
  struct Settled {
    QString renamed;     // the file name of the copy that is the entry now, since the entry's own file was missing
    QStringList merged;  // of copies that differed in nothing that anybody has to decide
    bool isLeft{false};  // there are still several versions

    [[nodiscard]] bool isSomething() const { return !renamed.isEmpty() || !merged.isEmpty(); }
  };
  // Does what needs no decision, see VersionMerge::byItself(); two machines come to the same. Nothing, with an error,
  // where that fails.
  [[nodiscard]] std::optional<Settled> settle(const ConflictedEntry& entry, Error* error) const;

  // Of an entry whose own file is damaged, and of which there is a whole copy: the copy takes its place and the damaged
  // file goes to the Trash. False, with an error, where that fails; `replaced` gets the copy's name, or nothing where
  // that is not how it is.
  bool replaceDamaged(const ConflictedEntry& entry, QString* replaced, Error* error) const;

 private:
  [[nodiscard]] std::optional<EntryVersion> readVersion(const JournalFolder& folder, const QString& name,
                                                        Error* error) const;
  [[nodiscard]] bool areAsRead(const JournalFolder& folder, const EntryVersions& entry, Error* error) const;
  [[nodiscard]] std::optional<QString> ancestorOf(const EntryVersions& entry) const;
  enum class OldVersion { ToTrash, Drop };
  bool replaceEntry(const JournalFolder& folder, const EntryVersions& entry, const QByteArray& bytes, OldVersion old,
                    Error* error) const;
  bool keepOldVersion(const JournalFolder& folder, const EntryVersion& version, const QString& uuid,
                      Error* error) const;
  bool toTrash(const EntryVersion& version, Error* error) const;
  bool remove(const JournalFolder& folder, const EntryVersion& version, Error* error) const;
  [[nodiscard]] QString movableName(const EntryVersion& version) const;
  bool takePlace(const JournalFolder& folder, const EntryVersions& entry, const EntryVersion& version,
                 Error* error) const;
  bool allToTrash(const EntryVersions& entry, Error* error) const;
  bool renameIntoPlace(const EntryVersions& entry, const EntryVersion& version, Error* error) const;
  bool makeEntryOf(const JournalFolder& folder, const QString& uuid, const EntryVersion& version, QStringList* added,
                   Error* error) const;
  [[nodiscard]] bool isSettledOrphan(const JournalFolder& folder, const EntryVersions& entry) const;

  QString m_folder;
  EntryAncestor* m_ancestor;
  std::chrono::seconds m_orphansAfter;
};

}  // namespace quillo
