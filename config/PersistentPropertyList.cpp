#include "config/PersistentPropertyList.h"

#include "foundation/FileContents.h"
#include "foundation/FolderLock.h"
#include "foundation/Log.h"
#include "foundation/TildeExpansion.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <fcntl.h>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

// A writer that is at work is done by then; a file that is really damaged costs its reader no more than this.
static constexpr unsigned long tornReadMilliseconds = 10;

// The error of a reader or writer that does not know the file's name.
static Error inFile(const QString& path, Error error) {
  error.localizedDescription = path + u": "_s + error.localizedDescription;
  return error;
}

PersistentPropertyList::PersistentPropertyList(const QUrl& url)
    : m_propertyListURL(url), m_path(url.toLocalFile()), m_folder(QFileInfo(m_path).path()) {}

std::unique_ptr<PersistentPropertyList> PersistentPropertyList::withPropertyListURL(const QUrl& url, Error* error) {
  auto list = std::unique_ptr<PersistentPropertyList>(new PersistentPropertyList(url));
  if (!list->readProps(error)) return nullptr;
  return list;
}

std::optional<PropertyListValue> PersistentPropertyList::parsedFile(Error* error) {
  Error reason;
  // Twice at most: what another program is writing in place reads as damaged for a moment.
  for (int attempt = 1;; ++attempt) {
    const auto bytes = contentsOfFile(m_path, &reason);
    if (!bytes && reason.domain == ErrorDomain::cocoa && reason.code == ErrorCode::fileReadNoSuchFile) {
      m_format = PropertyListFormat::Binary;
      m_contents.clear();
      return PropertyListDictionary();
    }
    if (!bytes) break;
    PropertyListFormat format{};
    if (const auto parsed = PropertyListSerialization::propertyListWithData(*bytes, &format, &reason)) {
      m_format = format;
      m_contents = *bytes;
      return *parsed;
    }
    if (attempt == 2) {
      reason = inFile(m_path, reason);
      break;
    }
    QThread::msleep(tornReadMilliseconds);
  }
  fail(error, reason);
  return std::nullopt;
}

std::optional<PropertyListDictionary> PersistentPropertyList::replaceProperties(Error* error) {
  const auto parsed = parsedFile(error);
  if (!parsed) return std::nullopt;
  // A top level that is no dictionary is taken as it comes: every key of it reads as absent.
  m_isDictionary = parsed->isDictionary();
  return std::exchange(m_properties, parsed->dictionary());
}

bool PersistentPropertyList::readProps(Error* error) {
  std::optional<PropertyListDictionary> before;
  {
    const FolderLock lock(m_folder, FolderLock::Mode::Shared);
    before = replaceProperties(error);
  }
  if (!before) return false;
  // A copy: an observer may set a value, which reads the file again.
  const PropertyListDictionary now = m_properties;
  tellChanges(*before, now);
  return true;
}

void PersistentPropertyList::tellChanges(const PropertyListDictionary& before, const PropertyListDictionary& now) {
  for (auto it = now.begin(); it != now.end(); ++it) {
    const auto old = before.find(it.key());
    if (old != before.end() && *old == *it) continue;
    willChangeValueForKey(it.key());
    didChangeValueForKey(it.key());
  }
  for (auto it = before.begin(); it != before.end(); ++it) {
    if (now.contains(it.key())) continue;
    // A removed key gets two will-change notices and no did-change. Observers of both applications know it so; keep it.
    willChangeValueForKey(it.key());
    willChangeValueForKey(it.key());
  }
}

std::optional<QByteArray> PersistentPropertyList::encoded(const PropertyListDictionary& properties,
                                                          Error* error) const {
  Error reason;
  auto bytes = PropertyListSerialization::dataWithPropertyList(properties, m_format, &reason);
  if (!bytes) fail(error, inFile(m_path, reason));
  return bytes;
}

PropertyListDictionary PersistentPropertyList::allProperties() const {
  if (m_dirtyProperties.isEmpty()) return m_properties;
  PropertyListDictionary all = m_properties;
  all.insert(m_dirtyProperties);
  return all;
}

bool PersistentPropertyList::synchronize(Error* error) {
  const auto failed = [this, error](QLatin1StringView what, const Error& reason) {
    QLLogInfo(u"Failed to %1 property list %2 - %3"_s.arg(what, m_propertyListURL.toString(), reason.description()));
    m_lastError = reason;
    return fail(error, reason);
  };
  if (!m_dirtyProperties.isEmpty() && writeOverUnchanged()) {
    m_lastError.reset();
    return true;
  }
  Error reason;
  if (!readProps(&reason)) return failed(QLatin1StringView("read"), reason);
  if (!m_dirtyProperties.isEmpty()) {
    std::optional<PropertyListDictionary> before;
    PropertyListDictionary now;
    bool isWritten = false;
    {
      // Read again, since observers were told of the first reading without the lock: they may take their time.
      const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
      before = replaceProperties(&reason);
      now = m_properties;
      isWritten = before && writeMerged(&reason);
    }
    if (before) tellChanges(*before, now);
    if (!isWritten) return failed(QLatin1StringView(before ? "write" : "read"), reason);
  }
  m_lastError.reset();
  return true;
}

PropertyListDictionary PersistentPropertyList::merged() const {
  PropertyListDictionary merged = allProperties();
  merged.removeIf([](const QString&, const PropertyListValue& value) { return value.isNull(); });
  return merged;
}

void PersistentPropertyList::tookOver(const PropertyListDictionary& properties, const QByteArray& contents) {
  m_properties = properties;
  m_contents = contents;
  m_dirtyProperties.clear();
}

bool PersistentPropertyList::writeMerged(Error* error) {
  if (!m_isDictionary)
    return fail(error, cocoaError(ErrorCode::propertyListWriteInvalid,
                                  m_path + u": the file there is no dictionary; left as it is"_s));
  const PropertyListDictionary properties = merged();
  const auto bytes = encoded(properties, error);
  // In place and not by renaming: the other application holds the same file.
  if (!bytes || !writeFileInPlace(m_path, *bytes, error)) return false;
  tookOver(properties, *bytes);
  return true;
}

bool PersistentPropertyList::writeOverUnchanged() {
  if (!m_isDictionary || m_contents.isEmpty()) return false;
  const FolderLock lock(m_folder, FolderLock::Mode::Exclusive);
  FileDescriptor file(::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
  if (!file.isOpen() || contentsOfOpenFile(file.number(), m_path) != m_contents) return false;
  const PropertyListDictionary properties = merged();
  const auto bytes = encoded(properties, nullptr);
  if (!bytes || !writeOpenFileInPlace(std::move(file), m_contents.size(), m_path, *bytes)) return false;
  tookOver(properties, *bytes);
  return true;
}

std::optional<PropertyListValue> PersistentPropertyList::valueForKey(const QString& key) const {
  for (const auto* layer : {&m_dirtyProperties, &m_properties})
    if (const auto found = layer->find(key); found != layer->end()) return *found;
  return std::nullopt;
}

void PersistentPropertyList::setValueForKey(const std::optional<PropertyListValue>& value, const QString& key) {
  // A removal always goes on, even of a key that is absent: it rewrites the file each time.
  if (value && value == valueForKey(key)) return;
  willChangeValueForKey(key);
  m_dirtyProperties.insert(key, value.value_or(PropertyListValue::Null{}));
  didChangeValueForKey(key);
  // A value that could not be saved stays pending; lastError() says why.
  synchronize();
}

bool PersistentPropertyList::boolForKey(const QString& key) const {
  const auto value = valueForKey(key);
  return value && value->boolValue();
}

qint64 PersistentPropertyList::integerForKey(const QString& key) const {
  const auto value = valueForKey(key);
  return value ? value->integerValue() : 0;
}

std::optional<QUrl> PersistentPropertyList::URLForKey(const QString& key) const {
  const auto value = valueForKey(key);
  if (!value || !value->isString()) return std::nullopt;
  return QUrl::fromLocalFile(stringByExpandingTildeInPath(value->string()));
}

void PersistentPropertyList::setURLForKey(const std::optional<QUrl>& url, const QString& key) {
  if (url && url->isValid())
    setValueForKey(PropertyListValue(url->isLocalFile() ? url->toLocalFile() : url->path(QUrl::FullyDecoded)), key);
  else
    setValueForKey(std::nullopt, key);
}

std::optional<PropertyListDictionary> PersistentPropertyList::dictionaryForKey(const QString& key) const {
  const auto value = valueForKey(key);
  if (!value || !value->isDictionary()) return std::nullopt;
  return value->dictionary();
}

}  // namespace quillo
