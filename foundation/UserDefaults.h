#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"
#include "foundation/StringMap.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// The process's own settings: one domain, kept in a property list of its own, over registered defaults that last as
// long as the process. Every set saves at once; a failed save is logged, the value stays in use and is written with the
// next. Another program may change the domain, too: a save lays only what was set here over what is there by then.
// Main thread only.
class UserDefaults {
 public:
  // The domain of the main bundle, in the user's configuration directory. Made on first use, and kept.
  static UserDefaults& standardUserDefaults();

  // Reads `DOMAIN.plist` in `directory`. A file that cannot be parsed reads as empty and is kept beside as
  // `DOMAIN.plist.damaged` before the first save.
  UserDefaults(const QString& directory, const QString& domain);

  [[nodiscard]] QString path() const { return m_path; }

  // Takes over what another program has written meanwhile. True when anything that is stored has changed.
  bool synchronize();
  // Why the last save failed; nothing after one that succeeded.
  [[nodiscard]] const std::optional<Error>& lastError() const { return m_lastError; }

  // Adds to what absent keys read as.
  void registerDefaults(const PropertyListDictionary& defaults);

  [[nodiscard]] std::optional<PropertyListValue> objectForKey(const QString& key) const;
  // Nothing removes the key; what is registered under it shows again.
  void setObjectForKey(const std::optional<PropertyListValue>& value, const QString& key);
  void removeObjectForKey(const QString& key) { setObjectForKey(std::nullopt, key); }

  [[nodiscard]] bool boolForKey(const QString& key) const;
  void setBoolForKey(bool value, const QString& key) { setObjectForKey(PropertyListValue(value), key); }
  [[nodiscard]] std::optional<QByteArray> dataForKey(const QString& key) const;
  // A path, with a leading "~" expanded, or an absolute URL's text.
  [[nodiscard]] std::optional<QUrl> URLForKey(const QString& key) const;

  // What is stored, without what is registered.
  [[nodiscard]] const PropertyListDictionary& persistentDomain() const { return m_values; }

 private:
  void readFile();
  void save();

  QString m_path;
  PropertyListDictionary m_values;
  // Set here and not yet written; nothing is a removal.
  StringMap<std::optional<PropertyListValue>> m_pending;
  std::optional<Error> m_lastError;
  PropertyListDictionary m_registered;
  bool m_fileIsDamaged{false};
};

}  // namespace quillo
