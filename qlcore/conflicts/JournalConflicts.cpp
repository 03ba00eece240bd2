#include "qlcore/conflicts/JournalConflicts.h"

#include "foundation/FolderLock.h"
#include "foundation/FolderOperations.h"
#include "foundation/Trash.h"
#include "qlcore/EntryFields.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/StorableValues.h"
#include "qlcore/conflicts/EntryAncestor.h"
#include "qlcore/conflicts/VersionMerge.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QMap>
#include <QUuid>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QByteArray digestOf(const QByteArray& bytes) {
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

std::optional<JournalFolder> openFolder(const QString& path, Error* error) {
  Error reason;
  auto folder = JournalFolder::open(path, &reason);
  if (!folder) fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));
  return folder;
}

bool changedMeanwhile(const EntryVersions& entry, Error* error) {
  return fail(error, JournalError::make(JournalError::WriteFailed,
                                        u"%1: the entry was changed meanwhile; nothing was done"_s.arg(entry.uuid)));
}

}  // namespace

JournalConflicts::JournalConflicts(QString entriesFolder, EntryAncestor* ancestor, std::chrono::seconds orphansAfter)
    : m_folder(std::move(entriesFolder)), m_ancestor(ancestor), m_orphansAfter(orphansAfter) {}

std::optional<QList<ConflictedEntry>> JournalConflicts::entries(Error* error) const {
  Error reason;
  const auto folder = JournalFolder::open(m_folder, &reason);
  if (!folder && EntryFields::isMissing(reason)) return QList<ConflictedEntry>();
  const auto names = folder ? folder->conflictCopies(&reason) : std::nullopt;
  if (!names) {
    fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));
    return std::nullopt;
  }
  QMap<QString, QStringList> copies;
  for (const QString& name : *names)
    if (const auto copy = ConflictNames::parse(name)) copies[copy->uuid] << name;
  QList<ConflictedEntry> entries;
  for (auto entry = copies.begin(); entry != copies.end(); ++entry) {
    entry->sort();
    entries << ConflictedEntry{entry.key(), *entry};
  }
  return entries;
}

std::optional<ConflictedEntry> JournalConflicts::entry(const QString& uuid, Error* error) const {
  const auto all = entries(error);
  if (!all) return std::nullopt;
  const auto found = std::find_if(all->begin(), all->end(), [&](const auto& entry) { return entry.uuid == uuid; });
  return found == all->end() ? ConflictedEntry{uuid, {}} : *found;
}

// Nothing without an error where there is no such file.
std::optional<EntryVersion> JournalConflicts::readVersion(const JournalFolder& folder, const QString& name,
                                                          Error* error) const {
  Error reason;
  const auto bytes = folder.readFile(name, &reason);
  EntryVersion version{
      name, ConflictNames::parse(name), folder.timeWritten(name), {}, {}, digestOf(bytes.value_or("unreadable"))};
  if (!bytes && EntryFields::isMissing(reason)) return std::nullopt;
  // A link or a device in its place is damage, a disk that fails is not.
  if (!bytes && reason.code != ErrorCode::fileReadCorrupt) {
    fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));
    return std::nullopt;
  }
  if (bytes) version.fields = EntryFields::parse(folder, name, *bytes, &reason);
  if (version.fields && version.fields->contains(EntryFields::text) &&
      !version.fields->value(EntryFields::text).isString()) {
    version.fields.reset();
    reason = EntryFields::damage(folder, name, u"its text is not a string"_s);
  }
  if (!version.fields) version.damage = reason.localizedDescription;
  return version;
}

std::optional<EntryVersions> JournalConflicts::read(const ConflictedEntry& entry, Error* error) const {
  const auto folder = openFolder(m_folder, error);
  if (!folder) return std::nullopt;
  EntryVersions versions{entry.uuid, {}};
  Error reason;
  const auto add = [&](const QString& name) {
    auto version = readVersion(*folder, name, &reason);
    if (version) versions.versions << std::move(*version);
    return version.has_value();
  };
  // Of two files of its own the one counts whose name is as we give it.
  for (const QString& name : QLJournalEntryFile::fileNames(entry.uuid))
    if (add(name) || reason.code != 0) break;
  for (const QString& name : entry.copies)
    if (reason.code == 0) add(name);
  if (reason.code == 0) return versions;
  fail(error, reason);
  return std::nullopt;
}

// The caller has the lock.
bool JournalConflicts::areAsRead(const JournalFolder& folder, const EntryVersions& entry, Error* error) const {
  for (const EntryVersion& version : entry.versions) {
    Error reason;
    const auto now = readVersion(folder, version.fileName, &reason);
    if (!now && reason.code != 0) return fail(error, reason);
    if (!now || now->digest != version.digest) return changedMeanwhile(entry, error);
  }
  if (!entry.isOrphaned()) return true;
  for (const QString& name : QLJournalEntryFile::fileNames(entry.uuid))
    if (folder.timeWritten(name) != 0) return changedMeanwhile(entry, error);
  return true;
}

std::optional<QString> JournalConflicts::ancestorOf(const EntryVersions& entry) const {
  QStringList texts;
  for (const EntryVersion& version : entry.versions)
    if (version.isWhole()) texts << version.text();
  return m_ancestor && texts.size() > 1 ? m_ancestor->textBefore(entry.uuid, texts) : std::nullopt;
}

MergedText JournalConflicts::merged(const EntryVersions& entry) const {
  return VersionMerge::texts(entry, ancestorOf(entry));
}

bool JournalConflicts::toTrash(const EntryVersion& version, Error* error) const {
  return Trash::moveItem(m_folder + u'/' + movableName(version), error).has_value();
}

// gocryptfs lets a file whose name it did not make be renamed where it is, and nothing else.
QString JournalConflicts::movableName(const EntryVersion& version) const {
  const QString name = ConflictNames::plainName(version.fileName);
  if (name == version.fileName) return name;
  const int number =
      renameToFree(QFile::encodeName(m_folder + u'/' + version.fileName), QFile::encodeName(m_folder + u'/' + name));
  return number == 0 ? name : version.fileName;
}

bool JournalConflicts::remove(const JournalFolder& folder, const EntryVersion& version, Error* error) const {
  Error reason;
  return folder.removeFile(movableName(version), &reason) || fail(error, JournalError::forWriting(reason));
}

bool JournalConflicts::allToTrash(const EntryVersions& entry, Error* error) const {
  return std::all_of(entry.versions.begin(), entry.versions.end(),
                     [&](const EntryVersion& version) { return !version.copy || toTrash(version, error); });
}

// A copy of the entry's file goes to the Trash before the file is written over. It has the name of a version, so that
// it is one when it is put back, and when we are ended before it has left the folder.
bool JournalConflicts::keepOldVersion(const JournalFolder& folder, const EntryVersion& version, const QString& uuid,
                                      Error* error) const {
  const QString time = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HHmmss-zzz"_s);
  const QString name = u"%1 (earlier version %2).plist"_s.arg(uuid, time);
  Error reason;
  const auto bytes = folder.readFile(version.fileName, &reason);
  if (!bytes || !folder.replaceFile(name, *bytes, &reason)) return fail(error, JournalError::forWriting(reason));
  if (Trash::moveItem(m_folder + u'/' + name, error)) return true;
  QFile::remove(m_folder + u'/' + name);
  return false;
}

// What the entry's file holds is in the Trash by the time it holds something else, unless that has all of it.
bool JournalConflicts::replaceEntry(const JournalFolder& folder, const EntryVersions& entry, const QByteArray& bytes,
                                    OldVersion old, Error* error) const {
  const EntryVersion* own = entry.isOrphaned() ? nullptr : &entry.versions.first();
  if (own && own->digest == digestOf(bytes)) return true;
  if (own && old == OldVersion::ToTrash && !keepOldVersion(folder, *own, entry.uuid, error)) return false;
  Error reason;
  const QString name = own ? own->fileName : QLJournalEntryFile::fileName(entry.uuid);
  return folder.replaceFile(name, bytes, &reason) || fail(error, JournalError::forWriting(reason));
}

// A copy becomes the entry, whose file there is.
bool JournalConflicts::takePlace(const JournalFolder& folder, const EntryVersions& entry, const EntryVersion& version,
                                 Error* error) const {
  Error reason;
  const auto bytes = folder.readFile(version.fileName, &reason);
  if (!bytes) return fail(error, JournalError::forWriting(reason));
  if (!replaceEntry(folder, entry, *bytes, OldVersion::ToTrash, error)) return false;
  // The entry has the very same now.
  return remove(folder, version, error);
}

bool JournalConflicts::renameIntoPlace(const EntryVersions& entry, const EntryVersion& version, Error* error) const {
  const QString place = m_folder + u'/' + QLJournalEntryFile::fileName(entry.uuid);
  int number = renameToFree(QFile::encodeName(m_folder + u'/' + version.fileName), QFile::encodeName(place));
  if (number == 0) number = syncFolder(m_folder);
  return number == 0 || fail(error, JournalError::forWriting(fileWriteError(number, place)));
}

bool JournalConflicts::keep(const EntryVersions& entry, qsizetype chosen, Error* error) const {
  if (chosen < 0 || chosen >= entry.versions.size() || !entry.versions[chosen].isWhole())
    return fail(error, JournalError::make(JournalError::EntryDamaged,
                                          entry.uuid + u": there is no such version, or it is damaged"_s));
  const auto folder = openFolder(m_folder, error);
  if (!folder) return false;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  if (!areAsRead(*folder, entry, error)) return false;
  EntryVersions others = entry;
  const EntryVersion& version = entry.versions[chosen];
  const bool isInPlace = !version.copy || (entry.isOrphaned() ? renameIntoPlace(entry, version, error)
                                                              : takePlace(*folder, entry, version, error));
  others.versions.removeAt(chosen);
  return isInPlace && allToTrash(others, error);
}

bool JournalConflicts::makeEntryOf(const JournalFolder& folder, const QString& uuid, const EntryVersion& version,
                                   QStringList* added, Error* error) const {
  const QUuid made = QUuid::createUuidV5(QUuid(uuid), version.digest);
  const QString identifier = made.toString(QUuid::WithoutBraces).toUpper();
  PropertyListDictionary fields = version.fields.value_or(PropertyListDictionary());
  fields.insert(EntryFields::uuid, identifier);
  Error reason;
  const auto bytes = EntryFields::serialized(fields, &reason);
  const QString name = QLJournalEntryFile::fileName(identifier);
  // Where it is there already, the same was decided before, and the person may have gone on with it.
  const bool isThere = folder.timeWritten(name) != 0;
  if (!bytes || (!isThere && !folder.replaceFile(name, *bytes, &reason)))
    return fail(error, JournalError::forWriting(reason));
  if (added && !added->contains(identifier)) *added << identifier;
  if (isThere) return toTrash(version, error);
  // The entry that was made has all of it.
  return remove(folder, version, error);
}

bool JournalConflicts::keepAll(const EntryVersions& entry, QStringList* added, Error* error) const {
  const auto folder = openFolder(m_folder, error);
  if (!folder) return false;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  if (!areAsRead(*folder, entry, error)) return false;
  for (const EntryVersion& version : entry.versions) {
    if (!version.copy) continue;
    const bool isDone =
        version.isWhole() ? makeEntryOf(*folder, entry.uuid, version, added, error) : toTrash(version, error);
    if (!isDone) return false;
  }
  return true;
}

bool JournalConflicts::keepMerged(const EntryVersions& entry, const QString& text, Error* error) const {
  const auto folder = openFolder(m_folder, error);
  if (!folder) return false;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  if (!areAsRead(*folder, entry, error)) return false;
  std::optional<PropertyListDictionary> fields;
  for (const EntryVersion& version : entry.versions)
    if (version.isWhole()) fields = fields ? VersionMerge::fieldsOfBoth(*fields, *version.fields) : version.fields;
  if (!fields) fields = PropertyListDictionary{{EntryFields::uuid, entry.uuid}};
  fields->insert(EntryFields::text, storableText(text));
  fields->insert(EntryFields::modificationDate, storableNow());
  Error reason;
  const auto bytes = EntryFields::serialized(*fields, &reason);
  if (!bytes) return fail(error, JournalError::forWriting(reason));
  return replaceEntry(*folder, entry, *bytes, OldVersion::ToTrash, error) && allToTrash(entry, error);
}

bool JournalConflicts::isSettledOrphan(const JournalFolder& folder, const EntryVersions& entry) const {
  using std::chrono::nanoseconds;
  const auto now = std::chrono::duration_cast<nanoseconds>(std::chrono::system_clock::now().time_since_epoch());
  const qint64 latest = (now - nanoseconds(m_orphansAfter)).count();
  return std::all_of(entry.versions.begin(), entry.versions.end(),
                     [&](const EntryVersion& version) { return folder.timeChanged(version.fileName) <= latest; });
}

namespace {

// The whole version that was saved last; of several at the same time the one whose name comes first.
qsizetype newestOf(const EntryVersions& entry) {
  qsizetype newest = -1;
  for (qsizetype i = 0; i < entry.versions.size(); ++i)
    if (entry.versions[i].isWhole() &&
        (newest < 0 || entry.versions[newest].modificationDate() < entry.versions[i].modificationDate()))
      newest = i;
  return newest;
}

}  // namespace

std::optional<JournalConflicts::Settled> JournalConflicts::settle(const ConflictedEntry& conflicted,
                                                                  Error* error) const {
  Settled settled;
  const auto folder = openFolder(m_folder, error);
  if (!folder) return std::nullopt;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  auto entry = read(conflicted, error);
  if (!entry) return std::nullopt;
  if (entry->isOrphaned()) {
    const qsizetype newest = newestOf(*entry);
    settled.isLeft = true;
    if (newest < 0 || !isSettledOrphan(*folder, *entry)) return settled;
    if (!renameIntoPlace(*entry, entry->versions[newest], error)) return std::nullopt;
    settled.renamed = entry->versions[newest].fileName;
    entry = read(conflicted, error);
    if (!entry) return std::nullopt;
  }
  settled.isLeft = entry->isConflict();
  if (!entry->isConflict() || !entry->versions.first().isWhole()) return settled;

  const auto ancestor = ancestorOf(*entry);
  PropertyListDictionary fields = *entry->versions.first().fields;
  EntryVersions absorbed{entry->uuid, {}};
  for (const EntryVersion& version : std::as_const(entry->versions)) {
    if (!version.copy || !version.isWhole()) continue;
    const auto both = VersionMerge::byItself(fields, *version.fields, ancestor);
    if (!both) continue;
    fields = *both;
    absorbed.versions << version;
    settled.merged << version.fileName;
  }
  if (absorbed.versions.isEmpty()) return settled;
  if (fields != *entry->versions.first().fields) {
    Error reason;
    const auto bytes = EntryFields::serialized(fields, &reason);
    if (!bytes) {
      fail(error, JournalError::forWriting(reason));
      return std::nullopt;
    }
    const bool isSameText = fields.value(EntryFields::text) == entry->versions.first().fields->value(EntryFields::text);
    if (!replaceEntry(*folder, *entry, *bytes, isSameText ? OldVersion::Drop : OldVersion::ToTrash, error))
      return std::nullopt;
  }
  if (!allToTrash(absorbed, error)) return std::nullopt;
  settled.isLeft = absorbed.versions.size() + 1 < entry->versions.size();
  return settled;
}

bool JournalConflicts::replaceDamaged(const ConflictedEntry& conflicted, QString* replaced, Error* error) const {
  replaced->clear();
  const auto folder = openFolder(m_folder, error);
  if (!folder) return false;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  const auto entry = read(conflicted, error);
  if (!entry) return false;
  const qsizetype newest = newestOf(*entry);
  if (entry->versions.isEmpty() || entry->isOrphaned() || entry->versions.first().isWhole() || newest < 0) return true;
  if (!takePlace(*folder, *entry, entry->versions[newest], error)) return false;
  *replaced = entry->versions[newest].fileName;
  return true;
}

}  // namespace quillo
