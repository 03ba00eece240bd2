#include "exchange/JournalImport.h"

#include "foundation/FolderLock.h"
#include "qlcore/EntryDetails.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/StorableValues.h"

#include <QHash>
#include <QUuid>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Noted together and then written together. Each holds a file open meanwhile, of which a program has a thousand.
constexpr qsizetype mostPending = 128;
constexpr qsizetype mostPendingBytes = qsizetype{8} * 1024 * 1024;

// A file of the folder of entries as it stands there.
struct EntryOnDisk {
  QString fileName;
  std::optional<PropertyListDictionary>
      fields;  // of a damaged file an empty dictionary; nothing where there is no file
};

// False, with an error, where it cannot be said.
bool find(const JournalFolder& folder, const QString& uuid, EntryOnDisk& found, Error* error) {
  for (const QString& name : QLJournalEntryFile::fileNames(uuid)) {
    Error reason;
    found = {name, EntryFields::read(folder, name, &reason)};
    if (found.fields) return true;
    if (EntryFields::isDamage(reason)) found.fields.emplace();
    if (found.fields) return true;
    if (!EntryFields::isMissing(reason)) return fail(error, reason);
  }
  found.fileName = QLJournalEntryFile::fileName(uuid);
  return true;
}

std::optional<Date> creationDate(const PropertyListDictionary& fields) {
  const auto created = storableDate(fields.value(EntryFields::creationDate));
  return created ? created : storableDate(fields.value(EntryFields::modificationDate));
}

EntryDetails detailsOf(const PropertyListDictionary& fields) {
  EntryDetails details{toWholeSecond(creationDate(fields).value_or(Date())),
                       fields.value(EntryFields::timeZone).string(),
                       {},
                       QLLocation::fromPropertyList(fields.value(EntryFields::location)),
                       QLWeather::fromPropertyList(fields.value(EntryFields::weather))};
  for (const auto& tag : fields.value(EntryFields::tags).array())
    if (!tag.string().isEmpty()) details.tags << tag.string();
  if (details.weather && details.weather->date) details.weather->date = toWholeSecond(*details.weather->date);
  return details;
}

// What is written for an entry that `there` is to give way to.
PropertyListDictionary fieldsToWrite(const ImportedEntry& entry, const PropertyListDictionary& there) {
  if (entry.isWhole) return entry.fields;
  PropertyListDictionary fields = there;
  for (const auto& key : {EntryFields::location, EntryFields::weather}) fields.remove(key);
  fields.insert(entry.fields);
  fields.insert(EntryFields::modificationDate, storableNow());
  return fields;
}

void addToSpan(JournalImport::Counts& counts, const PropertyListDictionary& fields) {
  const auto date = creationDate(fields);
  if (!date) return;
  counts.first = counts.first ? std::min(*counts.first, *date) : *date;
  counts.last = counts.last ? std::max(*counts.last, *date) : *date;
}

void count(JournalImport::Counts& counts, JournalImport::Fate fate) {
  switch (fate) {
    case JournalImport::Fate::New:
      ++counts.added;
      return;
    case JournalImport::Fate::Same:
      ++counts.same;
      return;
    case JournalImport::Fate::Differs:
      ++counts.differing;
      return;
    case JournalImport::Fate::Replaced:
      ++counts.replaced;
      return;
  }
}

bool isStopped(const JournalImport::Listener& listener) {
  return listener.isStopped && listener.isStopped();
}

// Goes through a source: problems and what is passed by are told of and counted, and so is an entry that comes twice.
// `take` gets the others until it answers false.
void walk(ImportSource& source, const JournalImport::Listener& listener, JournalImport::Counts& counts,
          const std::function<bool(const ImportedEntry&)>& take) {
  QHash<QUuid, int> lines;
  qint64 done = 0;
  const auto problem = [&](const ImportProblem& fault) {
    ++counts.problems;
    if (listener.problem) listener.problem(fault);
    return true;
  };
  source.forEach([&](const ImportItem& item) {
    if (isStopped(listener)) return false;
    if (listener.progress) listener.progress(++done);
    if (const auto* fault = std::get_if<ImportProblem>(&item)) return problem(*fault);
    if (const auto* passedBy = std::get_if<ImportPassedBy>(&item)) {
      ++counts.passedBy;
      if (listener.passedBy) listener.passedBy(*passedBy);
      return true;
    }
    const auto& entry = std::get<ImportedEntry>(item);
    const QUuid uuid = QUuid::fromString(entry.uuid);
    if (lines.contains(uuid)) return problem({entry.place, u"the entry %1 comes a second time"_s.arg(entry.uuid)});
    lines.insert(uuid, entry.place.line);
    addToSpan(counts, entry.fields);
    return take(entry);
  });
}

// What a program left that was killed in the middle of an import.
bool takeBackKilled(const QLJournalPackageFile& package, const JournalFolder& folder, const ImportRecordFolder& records,
                    const JournalImport::Listener& listener, Error* error) {
  const auto last = ImportUndo::lastImport(package);
  const QString path = ImportRecordFolder::newest(package);
  if (path.isEmpty() || (last && last->isFinished)) return true;
  Error reason;
  if (!ImportUndo::takeBackUnfinished(package, records, path, &reason)) {
    reason.localizedDescription.prepend(u"an earlier import, which was cut off, cannot be taken back: "_s);
    return fail(error, reason);
  }
  folder.removeLeftovers();
  if (last && listener.tookBack) listener.tookBack(*last);
  return true;
}

// Whether the entry is still as it was when it was looked at.
bool isAsPlanned(const JournalFolder& folder, const ImportStep& step) {
  Error reason;
  const auto there = folder.readFile(step.fileName, &reason);
  return there ? there == step.old : !step.old && EntryFields::isMissing(reason);
}

}  // namespace

JournalImport::Fate JournalImport::fateOf(const ImportedEntry& entry,
                                          const std::optional<PropertyListDictionary>& there) const {
  if (!there) return Fate::New;
  const auto text = [](const PropertyListDictionary& fields) {
    return storableText(fields.value(EntryFields::text).string());
  };
  const bool isSame = entry.isWhole ? *there == entry.fields
                                    : !there->isEmpty() && text(*there) == text(entry.fields) &&
                                          detailsOf(*there) == detailsOf(entry.fields);
  if (isSame) return Fate::Same;
  return m_isReplacing ? Fate::Replaced : Fate::Differs;
}

JournalImport::Counts JournalImport::look(ImportSource& source, const Listener& listener) const {
  Counts counts;
  Error error;
  const auto folder = JournalFolder::open(m_package.entriesFolder(), &error);
  walk(source, listener, counts, [&](const ImportedEntry& entry) {
    EntryOnDisk there;
    // Without a folder there are no entries; one that is there and cannot be read is found out when it is written.
    if (folder && !find(*folder, entry.uuid, there, &error)) there.fields.emplace();
    Error unwritable;
    if (!EntryFields::serialized(entry.fields, &unwritable)) {
      ++counts.problems;
      if (listener.problem) listener.problem({entry.place, unwritable.localizedDescription});
      return true;
    }
    count(counts, fateOf(entry, there.fields));
    return true;
  });
  return counts;
}

bool JournalImport::plan(const JournalFolder& folder, const ImportedEntry& entry, Counts& counts, Error* error) {
  EntryOnDisk there;
  if (!find(folder, entry.uuid, there, error)) return false;
  const Fate fate = fateOf(entry, there.fields);
  if (fate == Fate::Same || fate == Fate::Differs) {
    count(counts, fate);
    return true;
  }
  const auto bytes =
      EntryFields::serialized(fieldsToWrite(entry, there.fields.value_or(PropertyListDictionary())), nullptr);
  // Told of before, by look().
  if (!bytes) return true;
  Pending pending{{there.fileName, ImportStep::hashOf(*bytes), std::nullopt}, *bytes, fate};
  if (fate == Fate::Replaced) {
    pending.step.old = folder.readFile(there.fileName, error);
    if (!pending.step.old) return false;
    m_pendingBytes += pending.step.old->size();
  }
  m_pendingBytes += bytes->size();
  m_pending << std::move(pending);
  return true;
}

// Notes first what is written then. The disk is waited for once for all of the notes and once for all of the files.
bool JournalImport::writePending(const JournalFolder& folder, const ImportRecordFolder& records, Counts& counts,
                                 Error* error) {
  if (m_pending.isEmpty()) return true;
  if (!m_record) m_record = ImportRecord::begin(records.pathForNext(), m_origin, error);
  QList<ImportStep> steps;
  for (const Pending& pending : m_pending) steps << pending.step;
  if (!m_record || !m_record->append(steps, error)) return false;
  StagedFiles files = folder.stage();
  for (const Pending& pending : m_pending)
    if (!files.add(pending.step.fileName, pending.bytes, error)) return false;
  if (!files.sync(error)) return false;
  {
    // None of ours writes between the look and the change. What was written by somebody meanwhile is left to them.
    const FolderLock lock(folder.path(), FolderLock::Mode::Exclusive);
    for (qsizetype i = 0; i < m_pending.size(); ++i) {
      const bool isFree = isAsPlanned(folder, m_pending[i].step);
      if (isFree && !files.put(static_cast<size_t>(i), error)) return false;
      count(counts, isFree ? m_pending[i].fate : Fate::Differs);
    }
  }
  if (!files.syncFolder(error)) return false;
  m_pending.clear();
  m_pendingBytes = 0;
  return true;
}

std::optional<JournalImport::Counts> JournalImport::write(ImportSource& source, const Listener& listener,
                                                          Error* error) {
  const auto folder = JournalFolder::openOrMake(m_package.entriesFolder(), error);
  const auto records = folder ? ImportRecordFolder::claim(m_package, error) : std::nullopt;
  if (!folder || !records || !takeBackKilled(m_package, *folder, *records, listener, error)) return std::nullopt;
  m_record.reset();
  m_pending.clear();
  m_pendingBytes = 0;

  Counts counts;
  bool isWritten = true;
  bool wasStopped = false;
  Listener stopping = listener;
  stopping.isStopped = [&] { return wasStopped = isStopped(listener); };
  walk(source, stopping, counts, [&](const ImportedEntry& entry) {
    isWritten = plan(*folder, entry, counts, error);
    const bool isFull = m_pending.size() >= mostPending || m_pendingBytes >= mostPendingBytes;
    if (isWritten && isFull) isWritten = writePending(*folder, *records, counts, error);
    return isWritten;
  });
  if (isWritten && !wasStopped && writePending(*folder, *records, counts, error) &&
      (!m_record || m_record->end(error))) {
    records->removeOld();
    return counts;
  }
  if (wasStopped) fail(error, cocoaError(ErrorCode::fileWriteUnknown, u"it was stopped"_s));
  if (m_record && !ImportUndo::takeBackUnfinished(m_package, *records, m_record->path(), nullptr) && error)
    error->localizedDescription += u"; some of what was imported before could not be taken back"_s;
  return std::nullopt;
}

}  // namespace quillo
