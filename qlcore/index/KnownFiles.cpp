#include "qlcore/index/KnownFiles.h"

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

qint64 versionOf(IndexDatabase& database) {
  return database.first(u"PRAGMA data_version"_s).toLongLong();
}

// A stamp is kept as that of a file without a name.
EntryFileStamp notedFolder(IndexDatabase& database) {
  const QByteArray noted = database.first(u"SELECT value FROM setting WHERE name = 'names'"_s).toByteArray();
  return StampedFile::decoded(noted).value_or(StampedFile()).stamp;
}

// Rows of an index that are read at a time.
constexpr qsizetype portion = 2048;

// Whether they are rows in ascending order, the first behind `last`.
bool areRows(QByteArrayView bytes, QByteArrayView last) {
  if (bytes.size() % StampedFile::size != 0) return false;
  for (qsizetype at = 0; at < bytes.size(); at += StampedFile::size) {
    const QByteArrayView row = bytes.sliced(at, StampedFile::size);
    if (row <= last) return false;
    last = row;
  }
  return true;
}

}  // namespace

KnownFiles::KnownFiles(IndexDatabase& database) : m_database(database) {
  m_isReading = m_database.begin(/*forWriting=*/false);
  m_folder = notedFolder(m_database);
  m_version = versionOf(m_database);
}

KnownFiles::~KnownFiles() {
  if (m_isReading) m_database.commit();
}

void KnownFiles::read() {
  readEntries();
  readDamaged();
  readCopies();
  if (std::exchange(m_isReading, false)) m_database.commit();
}

// Row by row, handing them over would take several times as long as finding them.
void KnownFiles::readEntries() {
  QByteArray last("");
  // Each portion begins behind the one before it.
  while (true) {
    const QByteArray bytes = m_database
                                 .first(
                                     u"SELECT CAST(group_concat(file, '') AS BLOB) FROM "
                                     "(SELECT file FROM entry WHERE file > ? ORDER BY file LIMIT ?)"_s,
                                     {last, portion})
                                 .toByteArray();
    if (bytes.isEmpty()) return;
    // A full one comes before others; and the database's library promises no order of what it joins.
    const bool isWhole = m_count % portion == 0 && areRows(bytes, last);
    if (!isWhole) return m_database.fail(IndexFailure::Damaged, u"a row has no file"_s);
    last = bytes.last(StampedFile::size);
    m_count += bytes.size() / StampedFile::size;
    m_portions.push_back(bytes);
  }
}

StampedFile KnownFiles::entry(qsizetype number) const {
  const QByteArray& bytes = m_portions[static_cast<size_t>(number / portion)];
  const auto row = QByteArrayView(bytes).sliced(number % portion * StampedFile::size, StampedFile::size);
  return StampedFile::decoded(row).value_or(StampedFile());
}

void KnownFiles::readDamaged() {
  IndexDatabase::Rows rows = m_database.rows(u"SELECT name, stamp FROM damage"_s);
  while (rows.next())
    if (const auto file = StampedFile::decoded(rows.value(1).toByteArray()))
      m_damaged.insert(rows.value(0).toByteArray(), file->stamp);
}

void KnownFiles::readCopies() {
  IndexDatabase::Rows rows = m_database.rows(u"SELECT name, stamp FROM copy"_s);
  while (rows.next())
    if (const auto file = StampedFile::decoded(rows.value(1).toByteArray()))
      m_copies.insert(rows.value(0).toByteArray(), file->stamp);
}

void KnownFiles::noteAllOf(const EntryFileStamp& folder) {
  if (folder.isDistrusted() || notedFolder(m_database) == folder || !m_database.begin(/*forWriting=*/true)) return;
  if (versionOf(m_database) == m_version)
    m_database.run(u"INSERT OR REPLACE INTO setting VALUES('names', ?)"_s, {StampedFile{{}, folder}.encoded()});
  m_database.commit();
}

void KnownFiles::forgetAll(IndexDatabase& database) {
  database.run(u"DELETE FROM setting WHERE name = 'names'"_s);
}

}  // namespace quillo
