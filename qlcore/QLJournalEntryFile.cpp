#include "qlcore/QLJournalEntryFile.h"

#include "foundation/FolderLock.h"
#include "foundation/Log.h"
#include "qlcore/EntryFields.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/StorableValues.h"
#include "qlcore/TextMerge.h"

#include <QFileInfo>
#include <QTimeZone>
#include <QUuid>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView suffix{".plist"};
// Why a folder of entries could not be opened: without one there are no entries.
Error folderError(const Error& reason) {
  return JournalError::make(EntryFields::isMissing(reason) ? JournalError::EntryNotFound : JournalError::NotReadable,
                            reason.localizedDescription);
}

// Location or weather. One that is the same on disk stays there, with the keys in it that this version does not know.
template <typename Value>
void writeValue(PropertyListDictionary& fields, QLatin1StringView key, const std::optional<Value>& value) {
  if (!value || !value->isValid())
    fields.remove(key);
  else if (Value::fromPropertyList(fields.value(key)) != value)
    fields.insert(key, value->toPropertyList());
}

// One that is not valid counts as none.
template <typename Value>
bool isSame(const std::optional<Value>& a, const std::optional<Value>& b) {
  const bool isThere = a && a->isValid();
  return isThere == (b && b->isValid()) && (!isThere || a == b);
}

// The tags, and whatever else is in the list on disk, which is nobody's to remove.
PropertyListArray tagList(const QStringList& tags, const PropertyListArray& onDisk) {
  PropertyListArray list;
  for (const QString& tag : tags) list << tag;
  for (const auto& other : onDisk)
    if (!other.isString()) list << other;
  return list;
}

// What the file has, with what was added and taken out here since `before`.
QStringList mergedTags(const QStringList& before, const QStringList& theirs, const QStringList& ours) {
  QStringList merged;
  for (const QString& tag : theirs)
    if (ours.contains(tag) || !before.contains(tag)) merged << tag;
  for (const QString& tag : ours)
    if (!merged.contains(tag, Qt::CaseInsensitive) && !before.contains(tag)) merged << tag;
  return merged;
}

QStringList tagsIn(const PropertyListDictionary& fields) {
  QStringList tags;
  for (const auto& tag : fields.value(EntryFields::tags).array())
    if (tag.isString() && !tag.string().isEmpty()) tags << storableText(tag.string());
  return tags;
}

}  // namespace

std::optional<QString> QLJournalEntryFile::canonicalUUID(const QString& text) {
  const QUuid uuid = QUuid::fromString(text);
  // The parser takes braces and ignores what follows; only the plain form is an identifier here.
  const QString canonical = uuid.toString(QUuid::WithoutBraces).toUpper();
  if (uuid.isNull() || canonical != text.toUpper()) return std::nullopt;
  return canonical;
}

std::shared_ptr<QLJournalEntryFile> QLJournalEntryFile::newEntry() {
  auto entry = std::shared_ptr<QLJournalEntryFile>(new QLJournalEntryFile);
  entry->m_uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  entry->m_fileName = fileName(entry->m_uuid);
  entry->m_modificationDate = storableNow();
  entry->m_content.creationDate = entry->m_modificationDate;
  entry->m_content.timeZone = QString::fromLatin1(QTimeZone::systemTimeZoneId());
  return entry;
}

std::shared_ptr<QLJournalEntryFile> QLJournalEntryFile::emptyJournalEntry() {
  // A journal that is there and cannot be used (damaged, of a newer version) gets its own message from the save.
  Error error;
  const auto package = QLJournalPackageFile::openDefaultPackage(&error);
  const bool gone = !package && error.code == JournalError::JournalFileNotFound;
  return gone ? nullptr : newEntry();
}

std::optional<QUrl> QLJournalEntryFile::fileURL(const QLJournalPackageFile& package, const QString& uuid,
                                                Error* error) {
  const auto canonical = canonicalUUID(uuid);
  if (canonical)
    for (const QString& name : fileNames(*canonical))
      if (const QString path = package.entriesFolder() + u'/' + name; QFileInfo::exists(path))
        return QUrl::fromLocalFile(path);
  const QString text = canonical ? u"there is no entry "_s + *canonical : u"\"%1\" is no entry identifier"_s.arg(uuid);
  fail(error, JournalError::make(JournalError::EntryNotFound, text));
  return std::nullopt;
}

std::shared_ptr<QLJournalEntryFile> QLJournalEntryFile::entryWithUUID(const QLJournalPackageFile& package,
                                                                      const QString& uuid, Error* error) {
  Error reason;
  const auto folder = JournalFolder::open(package.entriesFolder(), &reason);
  if (folder) return entryInFolder(*folder, uuid, error);
  fail(error, folderError(reason));
  return nullptr;
}

std::shared_ptr<QLJournalEntryFile> QLJournalEntryFile::load(const QUrl& url, Error* error) {
  const QFileInfo file(url.toLocalFile());
  const QString uuid = file.completeBaseName();
  if (!url.isLocalFile() || file.fileName() != fileName(uuid)) {
    fail(error, JournalError::make(JournalError::EntryNotFound, url.toString() + u": not the file of an entry"_s));
    return nullptr;
  }
  Error reason;
  const auto folder = JournalFolder::open(file.path(), &reason);
  if (folder) return entryInFolder(*folder, uuid, error);
  fail(error, folderError(reason));
  return nullptr;
}

std::shared_ptr<QLJournalEntryFile> QLJournalEntryFile::entryInFolder(const JournalFolder& folder, const QString& uuid,
                                                                      Error* error) {
  const auto failed = [error](const Error& reason) {
    fail(error, reason);
    return nullptr;
  };
  const auto canonical = canonicalUUID(uuid);
  if (!canonical)
    return failed(
        JournalError::make(JournalError::EntryNotFound, u"\"%1\" is not an entry's identifier"_s.arg(uuid.left(100))));
  Error reason;
  std::optional<PropertyListDictionary> fields;
  QString name;
  for (const QString& possible : fileNames(*canonical)) {
    name = possible;
    fields = EntryFields::read(folder, name, &reason);
    if (fields || !EntryFields::isMissing(reason)) break;
  }
  if (!fields && EntryFields::isMissing(reason))
    return failed(
        JournalError::make(JournalError::EntryNotFound, u"%1: there is no entry %2"_s.arg(folder.path(), *canonical)));
  if (!fields && EntryFields::isDamage(reason)) return failed(reason);
  if (!fields) return failed(JournalError::make(JournalError::NotReadable, reason.localizedDescription));
  // Taking it for an empty text would let the next save wipe it out.
  if (fields->contains(EntryFields::text) && !fields->value(EntryFields::text).isString())
    return failed(EntryFields::damage(folder, name, u"its text is not a string"_s));

  auto entry = std::shared_ptr<QLJournalEntryFile>(new QLJournalEntryFile);
  // The name of the file counts: it is what the entry is found by.
  entry->m_uuid = *canonical;
  entry->m_fileName = name;
  entry->m_fileURL = QUrl::fromLocalFile(folder.path() + u'/' + name);
  entry->readFields(*fields);
  return entry;
}

QString QLJournalEntryFile::fileName(const QString& canonicalUUID) {
  return canonicalUUID + suffix;
}

std::array<QString, 2> QLJournalEntryFile::fileNames(const QString& canonicalUUID) {
  return {fileName(canonicalUUID), fileName(canonicalUUID.toLower())};
}

void QLJournalEntryFile::setString(const QString& text) {
  m_content.string = storableText(text);
}

void QLJournalEntryFile::setTags(const QStringList& tags) {
  m_content.tags.clear();
  for (const QString& tag : tags)
    if (!tag.isEmpty()) m_content.tags << storableText(tag);
}

bool QLJournalEntryFile::setCreationDate(Date date) {
  const auto storable = storableDate(toWholeSecond(date));
  if (!storable) return false;
  m_content.creationDate = storable;
  return true;
}

void QLJournalEntryFile::setTimeZone(const QString& name) {
  m_content.timeZone = storableText(name);
}

// Whatever the file holds, what is taken from it can be written again.
void QLJournalEntryFile::readFields(const PropertyListDictionary& fields) {
  setString(fields.value(EntryFields::text).string());
  m_content.tags = tagsIn(fields);
  const auto modified = storableDate(fields.value(EntryFields::modificationDate));
  m_content.creationDate = storableDate(fields.value(EntryFields::creationDate));
  m_modificationDate = modified.value_or(m_content.creationDate.value_or(Date()));
  m_content.timeZone = storableText(fields.value(EntryFields::timeZone).string());
  m_content.location = QLLocation::fromPropertyList(fields.value(EntryFields::location));
  m_content.weather = QLWeather::fromPropertyList(fields.value(EntryFields::weather));
  m_saved = m_content;
}

// What was not changed here is as another writer has left it.
void QLJournalEntryFile::adoptFrom(const PropertyListDictionary& fields) {
  const auto adopt = [](auto& ours, auto& saved, const auto& theirs) { ours = saved = theirs; };
  if (m_content.tags == m_saved.tags) adopt(m_content.tags, m_saved.tags, tagsIn(fields));
  if (isSame(m_content.location, m_saved.location))
    adopt(m_content.location, m_saved.location, QLLocation::fromPropertyList(fields.value(EntryFields::location)));
  if (isSame(m_content.weather, m_saved.weather))
    adopt(m_content.weather, m_saved.weather, QLWeather::fromPropertyList(fields.value(EntryFields::weather)));
  if (m_content.creationDate == m_saved.creationDate)
    adopt(m_content.creationDate, m_saved.creationDate, storableDate(fields.value(EntryFields::creationDate)));
  if (m_content.timeZone == m_saved.timeZone)
    adopt(m_content.timeZone, m_saved.timeZone, storableText(fields.value(EntryFields::timeZone).string()));
}

// Takes in what another writer has made of the entry: of text and tags also where both were changed here too.
void QLJournalEntryFile::mergeWith(const PropertyListDictionary& fields) {
  if (const auto& text = fields.value(EntryFields::text); text.isString() && m_content.string != m_saved.string) {
    const QString theirs = storableText(text.string());
    if (theirs != m_saved.string && theirs != m_content.string) {
      const MergedText merged = mergeTexts(m_saved.string, theirs, m_content.string);
      m_lastMerge = Merge{theirs, std::exchange(m_content.string, merged.text), merged.hasClash};
    }
  }
  if (m_content.tags != m_saved.tags)
    if (const QStringList theirs = tagsIn(fields); theirs != m_saved.tags)
      m_content.tags = mergedTags(m_saved.tags, theirs, m_content.tags);
  adoptFrom(fields);
}

void QLJournalEntryFile::writeFields(PropertyListDictionary& fields) const {
  const bool isNew = fields.isEmpty();
  if (isNew) fields.insert(EntryFields::uuid, m_uuid);
  fields.insert(EntryFields::modificationDate, m_modificationDate);
  writeContent(fields, isNew);
}

void QLJournalEntryFile::writeContent(PropertyListDictionary& fields, bool isNew) const {
  const auto& [string, tags, location, weather, creationDate, timeZone] = m_content;
  // A text that another writer has taken away, or made no text of, is not let go.
  const bool isTextLost = !fields.value(EntryFields::text).isString() && !string.isEmpty();
  if (isNew || isTextLost || string != m_saved.string) fields.insert(EntryFields::text, string);
  if (isNew || tags != m_saved.tags)
    fields.insert(EntryFields::tags, tagList(tags, fields.value(EntryFields::tags).array()));
  if (isNew || !isSame(location, m_saved.location)) writeValue(fields, EntryFields::location, location);
  if (isNew || !isSame(weather, m_saved.weather)) writeValue(fields, EntryFields::weather, weather);
  if (creationDate && (isNew || creationDate != m_saved.creationDate))
    fields.insert(EntryFields::creationDate, *creationDate);
  if (isNew || timeZone != m_saved.timeZone) fields.insert(EntryFields::timeZone, timeZone);
}

bool QLJournalEntryFile::saveToJournal(const QLJournalPackageFile* package, Error* error,
                                       QList<Error>* attachmentErrors) {
  if (attachmentErrors) attachmentErrors->clear();
  const auto configured = package ? nullptr : QLJournalPackageFile::openDefaultPackage(error);
  if (!package) package = configured.get();
  if (!package) return false;
  const QString introduction = u"The entry could not be saved: "_s;
  Error reason;
  const auto folder = JournalFolder::openOrMake(package->entriesFolder(), &reason);
  if (!folder) return fail(error, JournalError::forWriting(reason, introduction));

  // What another writer added to the file meanwhile is kept, and none of ours writes between reading and writing.
  const FolderLock lock(folder->path(), FolderLock::Mode::Exclusive);
  auto fields = EntryFields::read(*folder, m_fileName, &reason);
  if (!fields && EntryFields::isDamage(reason))
    QLLogInfo(u"Replaced a damaged entry - "_s + reason.localizedDescription);  // the text here is whole
  else if (!fields && !EntryFields::isMissing(reason))
    return fail(error, JournalError::forWriting(reason, introduction));
  const bool isGone = m_fileURL && !fields && EntryFields::isMissing(reason);
  if (!fields) fields.emplace();

  const Content own = m_content;
  const Content known = m_saved;
  m_lastMerge.reset();
  if (!fields->isEmpty()) mergeWith(*fields);
  const Date before = std::exchange(m_modificationDate, storableNow());
  writeFields(*fields);
  const auto bytes = EntryFields::serialized(*fields, &reason);
  if (!bytes || !folder->replaceFile(m_fileName, *bytes, &reason)) {
    m_modificationDate = before;
    m_content = own;
    m_saved = known;
    m_lastMerge.reset();
    return fail(error, JournalError::forWriting(reason, introduction));
  }
  m_fileURL = QUrl::fromLocalFile(folder->path() + u'/' + m_fileName);
  m_saved = m_content;
  m_wasBroughtBack = isGone;
  if (isGone) QLLogInfo(u"An entry that was deleted is there again, since it was edited - "_s + m_fileURL->path());
  // What a crash left of another save. Those who only read are not to wait for all names' being read.
  folder->removeLeftoversOnce();
  return true;
}

}  // namespace quillo
