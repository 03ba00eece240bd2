#pragma once

#include "qlcore/index/EntryFileStamp.h"
#include "qlcore/index/IndexDatabase.h"

#include <QByteArray>
#include <QHash>

#include <vector>

namespace quillo {

// What the tables hold of the files in the folder of entries, all of one moment. Failures are the database's.
class KnownFiles {
 public:
  // Begins to read, within a transaction that lasts until read() is through.
  explicit KnownFiles(IndexDatabase& database);
  ~KnownFiles();
  KnownFiles(const KnownFiles&) = delete;
  KnownFiles& operator=(const KnownFiles&) = delete;

  // Whether a folder with this stamp has the names of all these files and no others.
  [[nodiscard]] bool areAllOf(const EntryFileStamp& folder) const { return m_folder == folder; }
  void read();

  // Of entries, sorted by key. They stay packed, since there are very many.
  [[nodiscard]] qsizetype count() const { return m_count; }
  [[nodiscard]] StampedFile entry(qsizetype number) const;
  // By name, those of damaged entries too.
  [[nodiscard]] const QHash<QByteArray, EntryFileStamp>& damaged() const { return m_damaged; }

  // Conflict copies, by name.
  [[nodiscard]] const QHash<QByteArray, EntryFileStamp>& copies() const { return m_copies; }

  // Notes that the folder with this stamp has just the names that the tables hold now, unless another program has
  // written to them in the meantime.
  void noteAllOf(const EntryFileStamp& folder);
  // To be called in every transaction that may add or remove a name.
  static void forgetAll(IndexDatabase& database);

 private:
  void readEntries();
  void readDamaged();
  void readCopies();

  IndexDatabase& m_database;
  bool m_isReading{false};
  EntryFileStamp m_folder;
  qint64 m_version{0};                 // of the database, which other programs change
  std::vector<QByteArray> m_portions;  // of entries, all but the last of the same size
  qsizetype m_count{0};
  QHash<QByteArray, EntryFileStamp> m_damaged;
  QHash<QByteArray, EntryFileStamp> m_copies;
};

}  // namespace quillo
