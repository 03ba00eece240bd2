#pragma once

#include "foundation/Date.h"
#include "foundation/TimeZone.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/index/CommonPrefixes.h"
#include "qlcore/index/EntryFileStamp.h"
#include "qlcore/index/IndexedEntry.h"

#include <QByteArray>
#include <QDate>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace quillo {

class QLJournalEntryFile;

// The columns of the full-text table for one entry: words in the form in which they are compared, parted by spaces.
struct EntryWords {
  QByteArray text;
  QByteArray tags;
  QByteArray place;
  QByteArray marks;  // see SearchMarks.h

  // Of a text with those of other versions, of which each is by itself.
  [[nodiscard]] static EntryWords of(const QStringList& texts, const QStringList& tags, const QString& place, QDate day,
                                     const CommonPrefixes& prefixes);
};

// An entry on its way from its file to the database: what is stored of it.
struct EntryRecord {
  StampedFile file;
  Date creation;
  Date modification;
  QDate day;
  QString tags;  // as joinedTags() makes them
  QString place;
  QByteArray text;     // UTF-8
  QByteArray details;  // time zone, location and weather
  QByteArray others;   // the texts of other versions, as packedTexts() makes them; empty where there are none
  QByteArray digest;   // of all of the above but the file's stamp
  EntryWords words;

  [[nodiscard]] QByteArray computedDigest() const;
  // Of what a reader of the row gets: the words of an entry that goes are made anew of it.
  [[nodiscard]] EntryWords computedWords(const CommonPrefixes& prefixes) const;
  // Back to what it was made of; its excerpt is still to be found.
  [[nodiscard]] IndexedEntry toEntry() const;
};

// As one string and back; the sign between them is none that a tag can hold.
[[nodiscard]] QString joinedTags(const QStringList& tags);
[[nodiscard]] QStringList partedTags(const QString& joined);

[[nodiscard]] QByteArray packedTexts(const QStringList& texts);
[[nodiscard]] QStringList unpackedTexts(const QByteArray& packed);

// The conflict copies in a folder, by the identifier of their entry as EntryFileKey::uuidBytes() has it.
using CopyNames = QHash<QByteArray, QList<QByteArray>>;

// A conflict copy as it was found.
struct CopyReading {
  QByteArray name;
  EntryFileStamp stamp;
  QString text;  // empty of one that is damaged
};

// What a file among the entries turned out to be.
struct FileReading {
  QByteArray name;
  EntryFileStamp stamp;
  std::optional<EntryRecord> entry;
  QString damage;      // why it is none, in one line; empty for an entry and where the file is gone
  bool isGone{false};  // there is no such file any more
  // All of the entry; nothing where that is told with its other file.
  std::optional<std::vector<CopyReading>> copies;
};

// Reads files of entries. One for each thread.
class EntryReader {
 public:
  // `folder`, of which `descriptor` is the same, `prefixes` and `copies` must outlive the reader.
  EntryReader(const JournalFolder& folder, int descriptor, const CommonPrefixes& prefixes, const CopyNames& copies)
      : m_folder(folder), m_descriptor(descriptor), m_prefixes(prefixes), m_copies(copies) {}

  [[nodiscard]] FileReading read(const QByteArray& name);

 private:
  [[nodiscard]] EntryRecord record(const QLJournalEntryFile& entry, const StampedFile& file, const QStringList& others);
  void readEntry(FileReading& reading, const EntryFileKey& key);
  [[nodiscard]] std::vector<CopyReading> readCopies(const EntryFileKey& key) const;
  [[nodiscard]] QDate localDay(Date date, const QString& zone);

  const JournalFolder& m_folder;
  int m_descriptor;
  const CommonPrefixes& m_prefixes;
  const CopyNames& m_copies;
  QHash<QString, std::optional<TimeZone>> m_zones;
};

}  // namespace quillo
