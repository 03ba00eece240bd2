#pragma once

#include "foundation/PropertyListValue.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// A set of resources and the values that describe them. A program's resources are compiled in: the root is a Qt
// resource path, but any folder will do.
class Bundle {
 public:
  // The program's own bundle; set once, first thing, by the entry function.
  static const Bundle& mainBundle();
  static void setMainBundle(Bundle bundle);

  Bundle() = default;
  Bundle(QString resourceRoot, PropertyListDictionary info)
      : m_resourceRoot(std::move(resourceRoot)), m_info(std::move(info)) {}

  [[nodiscard]] QString resourceRoot() const { return m_resourceRoot; }
  [[nodiscard]] QString bundleIdentifier() const;
  [[nodiscard]] std::optional<PropertyListValue> objectForInfoDictionaryKey(const QString& key) const;

  // The path of the resource NAME.EXTENSION; nothing when there is none.
  [[nodiscard]] std::optional<QString> pathForResource(const QString& name, const QString& extension) const;
  // The bundle NAME.bundle inside this one; nothing when there is none.
  [[nodiscard]] std::optional<Bundle> bundleForResource(const QString& name) const;

  // The text for `key` in LANGUAGE.lproj/TABLE.strings, in the first of the user's languages that has it; else `value`,
  // or `key` where that is empty.
  [[nodiscard]] QString localizedStringForKey(const QString& key, const QString& value = {},
                                              const QString& table = QStringLiteral("Localizable")) const;
  // As above, for the languages given, most wanted first ("de-AT" also looks under "de").
  [[nodiscard]] QString localizedStringForKey(const QString& key, const QString& value, const QString& table,
                                              const QStringList& languages) const;

 private:
  QString m_resourceRoot;
  PropertyListDictionary m_info;
};

namespace InfoKey {
inline constexpr QLatin1StringView identifier{"CFBundleIdentifier"};
inline constexpr QLatin1StringView name{"CFBundleName"};
inline constexpr QLatin1StringView shortVersion{"CFBundleShortVersionString"};
inline constexpr QLatin1StringView version{"CFBundleVersion"};
inline constexpr QLatin1StringView copyright{"NSHumanReadableCopyright"};
}  // namespace InfoKey

}  // namespace quillo
