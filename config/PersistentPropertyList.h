#pragma once

#include "foundation/Error.h"
#include "foundation/KeyValueObserving.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/PropertyListValue.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

// A key/value store in one property-list file that another process writes too. It reads the file before every save,
// lays only the keys changed here over it, and tells observers of every key that the other writer changed. Programs
// that use this class wait for one another while they read or write (FolderLock). There is no watcher: a fresh read
// happens at creation, at every save and at synchronize().
//
// A set saves at once. When the save fails the value stays pending: it is visible here and is written at the next
// synchronize() that succeeds; lastError() says why it could not. Typed getters never fail. Main thread only.
class PersistentPropertyList final : public KeyValueObservable {
 public:
  // Null, with the read error, when the file exists and cannot be read as a property list; one that another program is
  // writing is read once more first. A missing file reads as empty; it is made, in the binary form, by the first set.
  [[nodiscard]] static std::unique_ptr<PersistentPropertyList> withPropertyListURL(const QUrl& url,
                                                                                   Error* error = nullptr);

  [[nodiscard]] QUrl propertyListURL() const { return m_propertyListURL; }
  // The file as last read or written. Observers may read this inside the notices: it is the new content already.
  [[nodiscard]] const PropertyListDictionary& properties() const { return m_properties; }
  // Set here and not yet written; a removal is the null marker.
  [[nodiscard]] const PropertyListDictionary& dirtyProperties() const { return m_dirtyProperties; }
  // `properties` with the pending values over it, null markers included.
  [[nodiscard]] PropertyListDictionary allProperties() const;

  // Reads again, merges and writes. False, logged, when the file cannot be read or written; what is pending stays so.
  bool synchronize(Error* error = nullptr);
  // Why the last synchronize(), or the save of the last set, failed: the file's name and the reason. Nothing after one
  // that succeeded.
  [[nodiscard]] const std::optional<Error>& lastError() const { return m_lastError; }

  // Nothing where the key is absent; the null marker for a removal not yet written.
  [[nodiscard]] std::optional<PropertyListValue> valueForKey(const QString& key) const;
  [[nodiscard]] std::optional<PropertyListValue> objectForKey(const QString& key) const { return valueForKey(key); }
  // A value equal to the one there changes nothing; nothing removes the key, and writes even when it was absent.
  void setValueForKey(const std::optional<PropertyListValue>& value, const QString& key);
  void setObjectForKey(const PropertyListValue& value, const QString& key) { setValueForKey(value, key); }
  void removeObjectForKey(const QString& key) { setValueForKey(std::nullopt, key); }

  [[nodiscard]] bool boolForKey(const QString& key) const;
  void setBoolForKey(bool value, const QString& key) { setValueForKey(PropertyListValue(value), key); }
  [[nodiscard]] qint64 integerForKey(const QString& key) const;
  void setIntegerForKey(qint64 value, const QString& key) { setValueForKey(PropertyListValue(value), key); }
  // Stored as the path; a leading "~" is expanded when read. An empty URL removes the key.
  [[nodiscard]] std::optional<QUrl> URLForKey(const QString& key) const;
  void setURLForKey(const std::optional<QUrl>& url, const QString& key);
  [[nodiscard]] std::optional<PropertyListDictionary> dictionaryForKey(const QString& key) const;

 private:
  explicit PersistentPropertyList(const QUrl& url);
  // The file's top level, in whatever form, which is kept; a dictionary of nothing where there is no file.
  std::optional<PropertyListValue> parsedFile(Error* error);
  // Takes the file's contents and answers those before, without telling anybody.
  std::optional<PropertyListDictionary> replaceProperties(Error* error);
  bool readProps(Error* error);
  void tellChanges(const PropertyListDictionary& before, const PropertyListDictionary& now);
  // Writes what is pending where the file is as it was last read or written, without reading its list again. False
  // where it is not, or cannot be written: nothing has changed then.
  bool writeOverUnchanged();
  bool writeMerged(Error* error);
  [[nodiscard]] PropertyListDictionary merged() const;
  std::optional<QByteArray> encoded(const PropertyListDictionary& properties, Error* error) const;
  void tookOver(const PropertyListDictionary& properties, const QByteArray& contents);

  PropertyListFormat m_format{PropertyListFormat::Binary};
  QUrl m_propertyListURL;
  QString m_path;
  QString m_folder;
  // The bytes of the file as last read or written. Times and sizes do not tell whether it is the same: two writes can
  // fall into one tick of the file system's clock.
  QByteArray m_contents;
  PropertyListDictionary m_properties;
  bool m_isDictionary{true};
  PropertyListDictionary m_dirtyProperties;
  std::optional<Error> m_lastError;
};

// Where to get a list that may be unreadable for a time: null meanwhile, and asked again at each use.
using PersistentPropertyListSource = std::function<PersistentPropertyList*()>;

}  // namespace quillo
