#include "qlcore/QLJournalEntryFile.h"

#include "foundation/FolderLock.h"
#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"
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
constexpr QLatin1StringView uuidKey{"uuid"};
constexpr QLatin1StringView textKey{"text"};
constexpr QLatin1StringView creationDateKey{"creationDate"};
constexpr QLatin1StringView modificationDateKey{"modificationDate"};
constexpr QLatin1StringView timeZoneKey{"timeZone"};
constexpr QLatin1StringView tagsKey{"tags"};
constexpr QLatin1StringView locationKey{"location"};
constexpr QLatin1StringView weatherKey{"weather"};

bool isMissing(const Error& error) {
  return error.domain == ErrorDomain::cocoa && error.code == ErrorCode::fileReadNoSuchFile;
}

// Why a folder of entries could not be opened: without one there are no entries.
Error folderError(const Error& reason) {
  return JournalError::make(isMissing(reason) ? JournalError::EntryNotFound : JournalError::NotReadable,
                            reason.localizedDescription);
}

bool isDamage(const Error& error) {
  return error.domain == JournalError::domain && error.code == JournalError::EntryDamaged;
}

Error damage(const JournalFolder& folder, const QString& name, const QString& why) {
  return JournalError::make(JournalError::EntryDamaged,
                            u"%1/%2: the entry is damaged, %3"_s.arg(folder.path(), name, why));
}

// The fields on disk; nothing, with an error, when they cannot be read.
std::optional<PropertyListDictionary> fieldsOnDisk(const JournalFolder& folder, const QString& name, Error* error) {
  const auto bytes = folder.readFile(name, error);
  if (!bytes) return std::nullopt;
  Error reason;
  const auto list = PropertyListSerialization::propertyListWithData(*bytes, nullptr, &reason);
  if (list && list->isDictionary()) return list->dictionary();
  fail(error, damage(folder, name, list ? u"it is not a dictionary"_s : reason.localizedDescription));
  return std::nullopt;
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
  for (const auto& tag : fields.value(tagsKey).array())
    if (tag.isString() && !tag.string().isEmpty()) tags << storableText(tag.string());
  return tags;
}

// XML, as entries are; but values of unknown keys may be such that only a binary list holds them. Every reader takes
// both, and losing the entry over another program's key would be worse.
std::optional<QByteArray> serialized(const PropertyListDictionary& fields, Error* error) {
  if (auto bytes = PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML)) return bytes;
  return PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::Binary, error);
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
    fields = fieldsOnDisk(folder, name, &reason);
    if (fields || !isMissing(reason)) break;
  }
  if (!fields && isMissing(reason))
    return failed(
        JournalError::make(JournalError::EntryNotFound, u"%1: there is no entry %2"_s.arg(folder.path(), *canonical)));
  if (!fields && isDamage(reason)) return failed(reason);
  if (!fields) return failed(JournalError::make(JournalError::NotReadable, reason.localizedDescription));
  // Taking it for an empty text would let the next save wipe it out.
  if (fields->contains(textKey) && !fields->value(textKey).isString())
    return failed(damage(folder, name, u"its text is not a string"_s));

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
  setString(fields.value(textKey).string());
  m_content.tags = tagsIn(fields);
  const auto modified = storableDate(fields.value(modificationDateKey));
  m_content.creationDate = storableDate(fields.value(creationDateKey));
  m_modificationDate = modified.value_or(m_content.creationDate.value_or(Date()));
  m_content.timeZone = storableText(fields.value(timeZoneKey).string());
  m_content.location = QLLocation::fromPropertyList(fields.value(locationKey));
  m_content.weather = QLWeather::fromPropertyList(fields.value(weatherKey));
  m_saved = m_content;
}

// What was not changed here is as another writer has left it.
void QLJournalEntryFile::adoptFrom(const PropertyListDictionary& fields) {
  const auto adopt = [](auto& ours, auto& saved, const auto& theirs) { ours = saved = theirs; };
  if (m_content.tags == m_saved.tags) adopt(m_content.tags, m_saved.tags, tagsIn(fields));
  if (isSame(m_content.location, m_saved.location))
    adopt(m_content.location, m_saved.location, QLLocation::fromPropertyList(fields.value(locationKey)));
  if (isSame(m_content.weather, m_saved.weather))
    adopt(m_content.weather, m_saved.weather, QLWeather::fromPropertyList(fields.value(weatherKey)));
  if (m_content.creationDate == m_saved.creationDate)
    adopt(m_content.creationDate, m_saved.creationDate, storableDate(fields.value(creationDateKey)));
  if (m_content.timeZone == m_saved.timeZone)
    adopt(m_content.timeZone, m_saved.timeZone, storableText(fields.value(timeZoneKey).string()));
}

// Takes in what another writer has made of the entry: of text and tags also where both were changed here too.
void QLJournalEntryFile::mergeWith(const PropertyListDictionary& fields) {
  if (const auto& text = fields.value(textKey); text.isString() && m_content.string != m_saved.string) {
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
  if (isNew) fields.insert(uuidKey, m_uuid);
  fields.insert(modificationDateKey, m_modificationDate);
  writeContent(fields, isNew);
}

void QLJournalEntryFile::writeContent(PropertyListDictionary& fields, bool isNew) const {
  const auto& [string, tags, location, weather, creationDate, timeZone] = m_content;
  // A text that another writer has taken away, or made no text of, is not let go.
  const bool isTextLost = !fields.value(textKey).isString() && !string.isEmpty();
  if (isNew || isTextLost || string != m_saved.string) fields.insert(textKey, string);
  if (isNew || tags != m_saved.tags) fields.insert(tagsKey, tagList(tags, fields.value(tagsKey).array()));
  if (isNew || !isSame(location, m_saved.location)) writeValue(fields, locationKey, location);
  if (isNew || !isSame(weather, m_saved.weather)) writeValue(fields, weatherKey, weather);
  if (creationDate && (isNew || creationDate != m_saved.creationDate)) fields.insert(creationDateKey, *creationDate);
  if (isNew || timeZone != m_saved.timeZone) fields.insert(timeZoneKey, timeZone);
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
  auto fields = fieldsOnDisk(*folder, m_fileName, &reason);
  if (!fields && isDamage(reason))
    QLLogInfo(u"Replaced a damaged entry - "_s + reason.localizedDescription);  // the text here is whole
  else if (!fields && !isMissing(reason))
    return fail(error, JournalError::forWriting(reason, introduction));
  if (!fields) fields.emplace();

  const Content own = m_content;
  const Content known = m_saved;
  m_lastMerge.reset();
  if (!fields->isEmpty()) mergeWith(*fields);
  const Date before = std::exchange(m_modificationDate, storableNow());
  writeFields(*fields);
  const auto bytes = serialized(*fields, &reason);
  if (!bytes || !folder->replaceFile(m_fileName, *bytes, &reason)) {
    m_modificationDate = before;
    m_content = own;
    m_saved = known;
    m_lastMerge.reset();
    return fail(error, JournalError::forWriting(reason, introduction));
  }
  m_fileURL = QUrl::fromLocalFile(folder->path() + u'/' + m_fileName);
  m_saved = m_content;
  // What a crash left of another save. Those who only read are not to wait for all names' being read.
  folder->removeLeftoversOnce();
  return true;
}

}  // namespace quillo
