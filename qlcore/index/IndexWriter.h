#pragma once

#include "qlcore/index/EntryOrder.h"
#include "qlcore/index/EntryRecord.h"
#include "qlcore/index/IndexDatabase.h"

#include <QByteArray>

#include <vector>

namespace quillo {

// Writes what was read of files into the tables, each call as one transaction. The files are the truth: a reading that
// its file has overtaken is left out.
class IndexWriter {
 public:
  // `folder` is the open folder of entries, `prefixes` those of the database.
  IndexWriter(IndexDatabase& database, int folder, const CommonPrefixes& prefixes)
      : m_database(database), m_folder(folder), m_prefixes(prefixes) {}

  void write(std::vector<FileReading> readings);
  // Of files that are no longer there.
  void remove(const std::vector<QByteArray>& names);

  [[nodiscard]] qsizetype changed() const { return m_changed; }
  [[nodiscard]] qsizetype removed() const { return m_removed; }
  // Readings that were left out.
  [[nodiscard]] qsizetype overtaken() const { return m_overtaken; }

  // The row `id` as a record without its words; nothing, with a failure of the database, where it is not whole.
  [[nodiscard]] static std::optional<EntryRecord> record(IndexDatabase& database, qint64 id);

 private:
  struct Known {
    qint64 id{0};
    StampedFile file;
    QByteArray digest;
  };
  [[nodiscard]] std::optional<Known> known(const EntryFileKey& key);
  [[nodiscard]] bool isOvertaken(const FileReading& reading) const;
  void put(EntryOrder& order, const FileReading& reading);
  void putEntry(EntryOrder& order, const EntryRecord& record);
  void putDamage(const FileReading& reading);
  void makeRoom(EntryOrder& order, const EntryOrderKey& key);
  void insertRow(qint64 id, const EntryRecord& record);
  std::optional<EntryRecord> takeRow(qint64 id);
  bool removeName(const QByteArray& name);
  void putCopies(const EntryFileKey& key, const std::vector<CopyReading>& copies);
  void begin();

  IndexDatabase& m_database;
  int m_folder;
  const CommonPrefixes& m_prefixes;
  bool m_hasDamage{true};
  bool m_hasCopies{true};
  qsizetype m_changed{0};
  qsizetype m_removed{0};
  qsizetype m_overtaken{0};
};

}  // namespace quillo
