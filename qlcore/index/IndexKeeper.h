#pragma once

#include "qlcore/index/CommonPrefixes.h"
#include "qlcore/index/IndexDatabase.h"
#include "qlcore/index/IndexFile.h"

#include <QString>

#include <optional>

namespace quillo {

// Opens the database of an index and keeps it usable: makes its tables, replaces one that is damaged or of another
// version, and goes on in memory where it cannot be on disk.
class IndexKeeper {
 public:
  struct Place {
    QString path;           // of the file; empty for one in memory
    QString entriesFolder;  // of which it is the index
    qint64 cacheKiB{0};
  };
  explicit IndexKeeper(const Place& place);
  ~IndexKeeper();
  IndexKeeper(const IndexKeeper&) = delete;
  IndexKeeper& operator=(const IndexKeeper&) = delete;

  [[nodiscard]] IndexDatabase& database() { return m_database; }
  [[nodiscard]] bool isInMemory() const { return !m_file; }
  // How often a database was opened: another number than before means that what was read is of another one.
  [[nodiscard]] int openings() const { return m_openings; }

  // Looks whether the file is still the one that was opened and only we have written to it; else opens another one.
  // False when that was so: it is empty then.
  bool check();
  // After a failure of the database: true where the same work can be tried again. What it held may be gone.
  bool recover();
  // Work was done to its end: the next failure is a new one.
  void noteSuccess() { m_failures = 0; }

  // Those by which entries are marked in this database. They can be set once, as long as there are no entries.
  [[nodiscard]] const CommonPrefixes& prefixes();
  void setPrefixes(const CommonPrefixes& prefixes);
  // Starts with an empty database again.
  void startAnew();

  // For much writing: the database may keep more of what it works on in memory, until told otherwise.
  void useMemory(bool much);

  // Moves the log into the file where it has grown larger than `logSize`.
  void settle(qint64 logSize);

 private:
  void open();
  bool openFile(const QString& path);
  [[nodiscard]] bool isOurs();
  [[nodiscard]] bool isOfOtherFolder();
  bool makeTables();
  void openInMemory();
  void writeLog();
  void close();

  Place m_place;
  std::optional<IndexFile> m_file;
  IndexDatabase m_database;
  std::optional<CommonPrefixes> m_prefixes;
  int m_failures{0};
  int m_openings{0};
};

}  // namespace quillo
