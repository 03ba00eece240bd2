#include "foundation/Bundle.h"

#include "foundation/PropertyListSerialization.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

namespace quillo {

using namespace Qt::StringLiterals;

static Bundle& storedMainBundle() {
  static Bundle bundle;
  return bundle;
}

const Bundle& Bundle::mainBundle() {
  return storedMainBundle();
}
void Bundle::setMainBundle(Bundle bundle) {
  storedMainBundle() = std::move(bundle);
}

QString Bundle::bundleIdentifier() const {
  return m_info.value(InfoKey::identifier).string();
}

std::optional<PropertyListValue> Bundle::objectForInfoDictionaryKey(const QString& key) const {
  const auto found = m_info.find(key);
  if (found == m_info.end()) return std::nullopt;
  return *found;
}

std::optional<QString> Bundle::pathForResource(const QString& name, const QString& extension) const {
  const QString path = m_resourceRoot + u'/' + name + (extension.isEmpty() ? QString() : u'.' + extension);
  if (!QFileInfo(path).isFile()) return std::nullopt;
  return path;
}

std::optional<Bundle> Bundle::bundleForResource(const QString& name) const {
  const QString path = m_resourceRoot + u'/' + name + u".bundle"_s;
  if (!QFileInfo(path).isDir()) return std::nullopt;
  return Bundle(path, {});
}

QString Bundle::localizedStringForKey(const QString& key, const QString& value, const QString& table) const {
  return localizedStringForKey(key, value, table, QLocale::system().uiLanguages());
}

QString Bundle::localizedStringForKey(const QString& key, const QString& value, const QString& table,
                                      const QStringList& languages) const {
  QStringList wanted;
  for (const QString& language : languages) wanted << language << language.section(u'-', 0, 0);
  wanted.removeDuplicates();
  for (const QString& language : wanted) {
    QFile file(m_resourceRoot + u'/' + language + u".lproj/"_s + table + u".strings"_s);
    // Compiled-in files are mapped, not read; small ones parse in microseconds. A text is asked for when a menu is
    // made.
    if (!file.open(QIODevice::ReadOnly)) continue;
    const auto strings = PropertyListSerialization::propertyListWithData(file.readAll());
    if (!strings) continue;
    const auto found = strings->dictionary().find(key);
    if (found != strings->dictionary().end() && found->isString()) return found->string();
  }
  return value.isEmpty() ? key : value;
}

}  // namespace quillo
