#include "qlcore/QLJournalIndex.h"

#include "foundation/Log.h"
#include "qlcore/ConflictNames.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

QLJournalIndex::QLJournalIndex(std::shared_ptr<QLJournalPackageFile> package, const std::stop_token& stop)
    : m_package(std::move(package)) {
  if (m_package) readEntries(stop);
}

QLJournalIndex QLJournalIndex::unread(std::shared_ptr<QLJournalPackageFile> package) {
  QLJournalIndex index;
  index.m_package = std::move(package);
  return index;
}

namespace {

struct WrittenEntry {
  std::shared_ptr<QLJournalEntryFile> entry;
  qint64 timeWritten;  // the dates in the file are of whole seconds
};

bool isListedBefore(const WrittenEntry& a, const WrittenEntry& b) {
  if (a.entry->creationDate() != b.entry->creationDate()) return a.entry->creationDate() > b.entry->creationDate();
  if (a.entry->modificationDate() != b.entry->modificationDate())
    return a.entry->modificationDate() > b.entry->modificationDate();
  if (a.timeWritten != b.timeWritten) return a.timeWritten > b.timeWritten;
  return a.entry->uuid() < b.entry->uuid();
}

// Why `name` is not read as an entry's file; nothing when it is one. Of two files of one entry the one counts whose
// name is as we write it.
QString whyNoEntry(const QString& name, const std::optional<QString>& uuid, const QSet<QString>& names) {
  const auto possible = uuid ? QLJournalEntryFile::fileNames(*uuid) : std::array<QString, 2>();
  if (name == possible[0]) return {};
  if (name != possible[1]) return u"the name is not an entry's identifier"_s;
  return names.contains(possible[0]) ? u"the entry has another file, "_s + possible[0] : QString();
}

}  // namespace

void QLJournalIndex::readEntries(const std::stop_token& stop) {
  const QString path = m_package->entriesFolder();
  Error reason;
  const auto folder = JournalFolder::open(path, &reason);
  const auto names = folder ? folder->propertyListNames(&reason) : std::nullopt;
  if (!names) {
    if (reason.code == ErrorCode::fileReadNoSuchFile) return;
    m_readError = JournalError::make(JournalError::NotReadable, reason.localizedDescription);
    addDamaged(path, reason.localizedDescription);
    return;
  }
  const QSet<QString> allNames(names->begin(), names->end());
  std::vector<WrittenEntry> written;
  for (const QString& name : *names) {
    if (stop.stop_requested()) break;
    // Other versions of an entry, or on their way to become one.
    if (ConflictNames::isConflictCopy(QFile::encodeName(name)) || ConflictNames::isTemporary(name)) continue;
    const QString file = path + u'/' + name;
    const auto uuid = QLJournalEntryFile::canonicalUUID(name.chopped(6));
    if (const QString why = whyNoEntry(name, uuid, allNames); !why.isEmpty()) {
      addDamaged(file, file + u": "_s + why);
      continue;
    }
    Error error;
    if (auto entry = QLJournalEntryFile::entryInFolder(*folder, *uuid, &error))
      written.push_back({std::move(entry), folder->timeWritten(name)});
    else if (error.code != JournalError::EntryNotFound)  // deleted by another program since the folder was read
      addDamaged(file, error.localizedDescription);
  }
  std::sort(written.begin(), written.end(), isListedBefore);
  for (WrittenEntry& next : written) m_entries << std::move(next.entry);
  std::sort(m_damaged.begin(), m_damaged.end(), [](const auto& a, const auto& b) { return a.url < b.url; });
}

void QLJournalIndex::addDamaged(const QString& path, const QString& reason) {
  QLLogInfo(u"Skipped a damaged entry - "_s + reason);
  m_damaged.append({QUrl::fromLocalFile(path), reason});
}

QList<QUrl> QLJournalIndex::urlsOfEntry(const QString& canonicalUUID) const {
  QList<QUrl> urls;
  for (const QString& name : QLJournalEntryFile::fileNames(canonicalUUID))
    urls << QUrl::fromLocalFile(m_package->entriesFolder() + u'/' + name);
  return urls;
}

QList<QUrl> QLJournalIndex::copiesOfEntry(const QString& canonicalUUID) const {
  QList<QUrl> urls;
  const auto folder = JournalFolder::open(m_package->entriesFolder(), nullptr);
  const auto names = folder ? folder->conflictCopies(nullptr) : std::nullopt;
  for (const QString& name : names.value_or(QStringList()))
    if (const auto copy = ConflictNames::parse(name); copy && copy->uuid == canonicalUUID)
      urls << QUrl::fromLocalFile(folder->path() + u'/' + name);
  return urls;
}

std::shared_ptr<QLJournalEntryFile> QLJournalIndex::entryFileWithUUID(const QString& uuid) const {
  const auto canonical = QLJournalEntryFile::canonicalUUID(uuid);
  const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                  [&](const auto& entry) { return canonical && entry->uuid() == *canonical; });
  return found == m_entries.end() ? nullptr : *found;
}

std::optional<QLEntry> QLJournalIndex::entryWithUUID(const QString& uuid) const {
  const auto canonical = QLJournalEntryFile::canonicalUUID(uuid);
  if (!canonical || !m_package) return std::nullopt;
  if (const auto file = entryFileWithUUID(*canonical)) return QLEntry{*canonical, *file->fileURLForEntryProperties()};
  const QList<QUrl> urls = urlsOfEntry(*canonical);
  for (const DamagedEntry& damaged : m_damaged)
    if (urls.contains(damaged.url)) return QLEntry{*canonical, damaged.url};
  return std::nullopt;
}

bool QLJournalIndex::deleteEntry(const QLEntry& entry, Error* error, const DeleteFileBlock& deleteFileBlock) {
  const auto canonical = QLJournalEntryFile::canonicalUUID(entry.uuid);
  // The path is made anew: it is about to be deleted, and may have come from anywhere.
  if (!canonical || !m_package || !urlsOfEntry(*canonical).contains(entry.url))
    return fail(error, JournalError::make(JournalError::EntryNotFound,
                                          u"%1: not an entry of this journal"_s.arg(entry.url.toString())));
  // Deleting goes by the path, which must not lead out of the journal.
  if (const QString folder = m_package->entriesFolder(); QFileInfo(folder).isSymLink())
    return fail(error, JournalError::make(JournalError::NotReadable,
                                          folder + u": a symbolic link, which is not followed inside a journal"_s));
  Error reason;
  const auto remove = [&](const QUrl& url) {
    reason = {};
    return deleteFileBlock && deleteFileBlock(url, &reason);
  };
  const auto wasGone = [&reason] {
    return (reason.domain == ErrorDomain::osStatus && reason.code == ErrorCode::fileNotFound) ||
           (reason.domain == ErrorDomain::cocoa && reason.code == ErrorCode::fileNoSuchFile);
  };
  // First its other versions, of which one would be the entry else.
  for (const QUrl& copy : copiesOfEntry(*canonical))
    if (!remove(copy) && !wasGone()) return fail(error, reason);
  const bool removed = remove(entry.url);
  if (removed || wasGone()) {
    m_entries.removeIf([&](const auto& known) { return known->uuid() == *canonical; });
    m_damaged.removeIf([&](const auto& known) { return known.url == entry.url; });
  }
  return removed || fail(error, reason);
}

bool QLJournalIndex::deleteEntryFile(const std::shared_ptr<QLJournalEntryFile>& entryFile, Error* error,
                                     const DeleteFileBlock& deleteFileBlock) {
  if (!entryFile) return fail(error, JournalError::make(JournalError::EntryNotFound, u"There is no entry to delete"_s));
  const auto url = entryFile->fileURLForEntryProperties();
  return !url || deleteEntry({entryFile->uuid(), *url}, error, deleteFileBlock);
}

}  // namespace quillo
