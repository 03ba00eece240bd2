#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

namespace quillo {

class JournalFolder;
class QLJournalPackageFile;

// One entry of a journal and its file, Entries/UUID.plist. Keys of the file that this version does not know are kept,
// also those that another writer added since the entry was read.
class QLJournalEntryFile {
 public:
  // A new, unsaved entry with an identifier of its own; null when no journal is configured or nothing is at its place.
  [[nodiscard]] static std::shared_ptr<QLJournalEntryFile> emptyJournalEntry();
  // A new, unsaved entry, whatever is configured.
  [[nodiscard]] static std::shared_ptr<QLJournalEntryFile> newEntry();

  // The entry `uuid` of the package. Null, with an error, when there is none, it is damaged, or `uuid` is no
  // identifier: it may come from outside and never becomes a path unchecked.
  [[nodiscard]] static std::shared_ptr<QLJournalEntryFile> entryWithUUID(const QLJournalPackageFile& package,
                                                                         const QString& uuid, Error* error);
  // As above, by the entry's file.
  [[nodiscard]] static std::shared_ptr<QLJournalEntryFile> load(const QUrl& url, Error* error);
  // As above, from an open folder of entries.
  [[nodiscard]] static std::shared_ptr<QLJournalEntryFile> entryInFolder(const JournalFolder& folder,
                                                                         const QString& uuid, Error* error);

  // Where the file of the entry `uuid` is, damaged or not; nothing, with an error, when there is none.
  [[nodiscard]] static std::optional<QUrl> fileURL(const QLJournalPackageFile& package, const QString& uuid,
                                                   Error* error);
  // `text` in the form that file names have (upper case, no braces); nothing when it is no UUID.
  [[nodiscard]] static std::optional<QString> canonicalUUID(const QString& text);
  // The name of the file of an entry.
  [[nodiscard]] static QString fileName(const QString& canonicalUUID);

  [[nodiscard]] QString uuid() const { return m_uuid; }
  [[nodiscard]] QString string() const { return m_string; }
  // Characters that the file format cannot hold (controls, halves of a surrogate pair: pasted text may have them)
  // become U+FFFD, so that a save never fails because of them. The same holds for tags, place names and weather texts.
  void setString(const QString& text);
  [[nodiscard]] QStringList tags() const { return m_tags; }
  void setTags(const QStringList& tags);
  [[nodiscard]] std::optional<QLLocation> location() const { return m_location; }
  void setLocation(const std::optional<QLLocation>& location) { m_location = location; }
  [[nodiscard]] std::optional<QLWeather> weather() const { return m_weather; }
  void setWeather(const std::optional<QLWeather>& weather) { m_weather = weather; }
  [[nodiscard]] Date creationDate() const { return m_creationDate; }
  // Of the last save.
  [[nodiscard]] Date modificationDate() const { return m_modificationDate; }
  // The IANA name of the zone that the entry was begun in.
  [[nodiscard]] QString timeZone() const { return m_timeZone; }
  // Nothing before the first save.
  [[nodiscard]] std::optional<QUrl> fileURLForEntryProperties() const { return m_fileURL; }

  // Writes or rewrites the entry's file in the package, as it is on disk now but for the values above. False, with an
  // error of JournalError::domain, when it cannot; the file then holds what it held (but for a disk that fails in
  // syncing: then the old or the new). A null package fails with the reason why the
  // configured journal cannot be opened. A location or weather that is not valid counts as
  // absent. Entries have no attachments yet, so `attachmentErrors` is only emptied.
  bool saveToJournal(const QLJournalPackageFile* package, Error* error, QList<Error>* attachmentErrors = nullptr);

 private:
  QLJournalEntryFile() = default;
  void readFields(const PropertyListDictionary& fields);
  void writeFields(PropertyListDictionary& fields) const;

  QString m_uuid;
  QString m_string;
  QStringList m_tags;
  std::optional<QLLocation> m_location;
  std::optional<QLWeather> m_weather;
  Date m_creationDate;
  Date m_modificationDate;
  QString m_timeZone;
  std::optional<QUrl> m_fileURL;
};

}  // namespace quillo
