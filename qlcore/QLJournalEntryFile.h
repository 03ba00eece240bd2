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

#include <array>
#include <memory>
#include <optional>

namespace quillo {

class JournalFolder;
class QLJournalPackageFile;

// One entry of a journal and its file, Entries/UUID.plist. A save writes what was changed since the entry was read and
// leaves the rest of the file as it is there now: keys and values that this version does not know, and what another
// writer changed since, which the entry then has, too, but for a text that was not changed here. Where both changed the
// text or the tags, the file gets the changes of both; of the rest it gets ours. A file whose name has its letters in
// lower case, as another writer may make it, keeps it.
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
  // The name of the file of an entry, as we give it.
  [[nodiscard]] static QString fileName(const QString& canonicalUUID);
  // The names that it can have: that one, then the one in lower case.
  [[nodiscard]] static std::array<QString, 2> fileNames(const QString& canonicalUUID);

  [[nodiscard]] QString uuid() const { return m_uuid; }
  [[nodiscard]] QString string() const { return m_content.string; }
  // Characters that the file format cannot hold (controls, halves of a surrogate pair: pasted text may have them)
  // become U+FFFD, so that a save never fails because of them. The same holds for tags, place names and weather texts.
  void setString(const QString& text);
  [[nodiscard]] QStringList tags() const { return m_content.tags; }
  void setTags(const QStringList& tags);
  [[nodiscard]] std::optional<QLLocation> location() const { return m_content.location; }
  void setLocation(const std::optional<QLLocation>& location) { m_content.location = location; }
  [[nodiscard]] std::optional<QLWeather> weather() const { return m_content.weather; }
  void setWeather(const std::optional<QLWeather>& weather) { m_content.weather = weather; }
  // Where the file has none, that of the last save.
  [[nodiscard]] Date creationDate() const { return m_content.creationDate.value_or(m_modificationDate); }
  // When it was, to the second. False, and nothing changes, for a date that no file can hold.
  bool setCreationDate(Date date);
  // Of the last save.
  [[nodiscard]] Date modificationDate() const { return m_modificationDate; }
  // The IANA name of the zone that the entry was begun in.
  [[nodiscard]] QString timeZone() const { return m_content.timeZone; }
  // The moment stays; a clock reads otherwise there.
  void setTimeZone(const QString& name);
  // Nothing before the first save.
  [[nodiscard]] std::optional<QUrl> fileURLForEntryProperties() const { return m_fileURL; }

  // A save in which the texts of two writers became one, which string() then is.
  struct Merge {
    QString theirs;        // as the other had left it
    QString ours;          // as it was to be saved
    bool hasClash{false};  // both wrote different things in the same place, and both are there now
  };

  // Writes the entry's file in the package, or lays over it what was changed above since it was read. False, with an
  // error of JournalError::domain, when it cannot; the file then holds what it held (but for a disk that fails in
  // syncing: then the old or the new). A null package fails with the reason why the
  // configured journal cannot be opened. A location or weather that is not valid counts as
  // absent. Entries have no attachments yet, so `attachmentErrors` is only emptied.
  bool saveToJournal(const QLJournalPackageFile* package, Error* error, QList<Error>* attachmentErrors = nullptr);
  // Of the last save; nothing where no other writer had changed the text.
  [[nodiscard]] const std::optional<Merge>& lastMerge() const { return m_lastMerge; }
  // Whether the last save found an entry that had been saved before deleted, and made its file anew: what was written
  // here counts for more than a deletion by somebody who had not seen it.
  [[nodiscard]] bool wasBroughtBack() const { return m_wasBroughtBack; }

 private:
  QLJournalEntryFile() = default;
  // What can be changed here.
  struct Content {
    QString string;
    QStringList tags;
    std::optional<QLLocation> location;
    std::optional<QLWeather> weather;
    std::optional<Date> creationDate;
    QString timeZone;
  };
  void readFields(const PropertyListDictionary& fields);
  void mergeWith(const PropertyListDictionary& fields);
  void adoptFrom(const PropertyListDictionary& fields);
  void writeFields(PropertyListDictionary& fields) const;
  void writeContent(PropertyListDictionary& fields, bool isNew) const;

  QString m_uuid;
  QString m_fileName;
  Content m_content;
  Content m_saved;  // as last read or written
  std::optional<Merge> m_lastMerge;
  bool m_wasBroughtBack{false};
  Date m_modificationDate;
  std::optional<QUrl> m_fileURL;
};

}  // namespace quillo
