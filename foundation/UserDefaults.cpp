#include "foundation/UserDefaults.h"

#include "foundation/Bundle.h"
#include "foundation/FileContents.h"
#include "foundation/FolderLock.h"
#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/TildeExpansion.h"
#include "foundation/UserDirectories.h"

#include <QDir>
#include <QFile>

namespace quillo {

using namespace Qt::StringLiterals;

UserDefaults& UserDefaults::standardUserDefaults() {
  static UserDefaults defaults(UserDirectories::current().configuration + u"/quillo"_s,
                               Bundle::mainBundle().bundleIdentifier());
  return defaults;
}

UserDefaults::UserDefaults(const QString& directory, const QString& domain)
    : m_path(directory + u'/' + domain + u".plist"_s) {
  readFile();
}

// What cannot be read leaves the values as they are; what is pending stays over what is read.
void UserDefaults::readFile() {
  Error error;
  const auto bytes = contentsOfFile(m_path, &error);
  if (bytes) {
    const auto list = PropertyListSerialization::propertyListWithData(*bytes, nullptr, &error);
    m_fileIsDamaged = !list || !list->isDictionary();
    if (m_fileIsDamaged)
      QLLogInfo(u"User defaults %1 are damaged and read as empty - %2"_s.arg(m_path, error.description()));
    else
      m_values = list->dictionary();
  } else if (error.code == ErrorCode::fileReadNoSuchFile) {
    m_values = {};
  } else {
    QLLogInfo(u"Failed to read user defaults %1 - %2"_s.arg(m_path, error.description()));
  }
  for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
    if (const auto& value = *it)
      m_values.insert(it.key(), *value);
    else
      m_values.remove(it.key());
  }
}

bool UserDefaults::synchronize() {
  const PropertyListDictionary before = m_values;
  const FolderLock lock(QFileInfo(m_path).path(), FolderLock::Mode::Shared);
  readFile();
  return m_values != before;
}

void UserDefaults::registerDefaults(const PropertyListDictionary& defaults) {
  m_registered.insert(defaults);
}

std::optional<PropertyListValue> UserDefaults::objectForKey(const QString& key) const {
  for (const auto* layer : {&m_values, &m_registered})
    if (const auto found = layer->find(key); found != layer->end()) return *found;
  return std::nullopt;
}

void UserDefaults::setObjectForKey(const std::optional<PropertyListValue>& value, const QString& key) {
  const auto found = m_values.find(key);
  if (value ? found != m_values.cend() && *found == *value : found == m_values.cend()) return;
  m_pending.insert(key, value);
  save();
}

void UserDefaults::save() {
  Error error;
  QDir().mkpath(QFileInfo(m_path).path());
  const FolderLock lock(QFileInfo(m_path).path(), FolderLock::Mode::Exclusive);
  readFile();
  if (m_fileIsDamaged) {
    QFile::remove(m_path + u".damaged"_s);
    QFile::copy(m_path, m_path + u".damaged"_s);
    m_fileIsDamaged = false;
  }
  const auto bytes = PropertyListSerialization::dataWithPropertyList(m_values, PropertyListFormat::XML, &error);
  if (!bytes || !writeFileAtomically(m_path, *bytes, &error)) {
    QLLogInfo(u"Failed to write user defaults %1 - %2"_s.arg(m_path, error.description()));
    m_lastError = error;
    return;
  }
  m_pending = {};
  m_lastError.reset();
}

bool UserDefaults::boolForKey(const QString& key) const {
  const auto value = objectForKey(key);
  return value && value->boolValue();
}

std::optional<QByteArray> UserDefaults::dataForKey(const QString& key) const {
  const auto value = objectForKey(key);
  if (!value || !value->isData()) return std::nullopt;
  return value->data();
}

std::optional<QUrl> UserDefaults::URLForKey(const QString& key) const {
  const auto value = objectForKey(key);
  if (!value || !value->isString() || value->string().isEmpty()) return std::nullopt;
  const QString path = stringByExpandingTildeInPath(value->string());
  const QUrl url = path.startsWith(u'/') ? QUrl::fromLocalFile(path) : QUrl(path, QUrl::StrictMode);
  if (!url.isValid() || url.isRelative()) return std::nullopt;
  return url;
}

}  // namespace quillo
