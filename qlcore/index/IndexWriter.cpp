#include "qlcore/index/IndexWriter.h"

#include "qlcore/index/KnownFiles.h"

#include <QSet>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The first value after all that begin with the key.
QByteArray behind(QByteArray encodedKey) {
  encodedKey.back() = static_cast<char>(encodedKey.back() + 1);
  return encodedKey;
}

QVariantList wordValues(const QVariant& first, const EntryWords& words) {
  return {first, words.text, words.tags, words.place, words.marks};
}

}  // namespace

void IndexWriter::write(std::vector<FileReading> readings) {
  if (readings.empty() || !m_database.begin(/*forWriting=*/true)) return;
  // The full-text table takes rows most easily in their order.
  std::sort(readings.begin(), readings.end(), [](const FileReading& a, const FileReading& b) {
    if (!a.entry || !b.entry) return a.entry.has_value() < b.entry.has_value();
    return EntryOrderKey::of(*a.entry).isBefore(EntryOrderKey::of(*b.entry));
  });
  begin();
  EntryOrder order(m_database);
  for (const FileReading& reading : readings) put(order, reading);
  m_database.commit();
}

void IndexWriter::begin() {
  KnownFiles::forgetAll(m_database);
  // Nearly no journal has any.
  m_hasDamage = m_database.first(u"SELECT 1 FROM damage LIMIT 1"_s).isValid();
  m_hasCopies = m_database.first(u"SELECT 1 FROM copy LIMIT 1"_s).isValid();
}

void IndexWriter::remove(const std::vector<QByteArray>& names) {
  if (names.empty() || !m_database.begin(/*forWriting=*/true)) return;
  begin();
  for (const QByteArray& name : names) {
    if (EntryFileStamp::of(m_folder, name))
      ++m_overtaken;  // it is there again
    else if (removeName(name))
      ++m_removed;
  }
  m_database.commit();
}

bool IndexWriter::isOvertaken(const FileReading& reading) const {
  const auto now = EntryFileStamp::of(m_folder, reading.name);
  if (reading.isGone || !now) return reading.isGone == now.has_value();
  // One that is in the way of another file has no stamp of its own.
  if (reading.stamp == EntryFileStamp()) return false;
  return *now != reading.stamp && now->distrusted() != reading.stamp;
}

void IndexWriter::put(EntryOrder& order, const FileReading& reading) {
  if (isOvertaken(reading)) {
    ++m_overtaken;
    return;
  }
  if (reading.isGone) {
    if (removeName(reading.name)) ++m_removed;
  } else if (reading.entry) {
    if (m_hasDamage) m_database.run(u"DELETE FROM damage WHERE name = ?"_s, {reading.name});
    putEntry(order, *reading.entry);
  } else {
    putDamage(reading);
  }
  const auto key = EntryFileKey::fromName(reading.name);
  if (key && reading.copies) putCopies(*key, *reading.copies);
}

// Those that are known of the entry are these.
void IndexWriter::putCopies(const EntryFileKey& key, const std::vector<CopyReading>& copies) {
  if (!m_hasCopies && copies.empty()) return;
  const QByteArray uuid = key.uuidBytes();
  QSet<QByteArray> before;
  {
    IndexDatabase::Rows rows = m_database.rows(u"SELECT name FROM copy WHERE uuid = ?"_s, {uuid});
    while (rows.next()) before.insert(rows.value(0).toByteArray());
  }
  if (!before.isEmpty()) m_database.run(u"DELETE FROM copy WHERE uuid = ?"_s, {uuid});
  QSet<QByteArray> now;
  for (const CopyReading& copy : copies) {
    now.insert(copy.name);
    m_database.run(u"INSERT INTO copy VALUES(?, ?, ?)"_s, {copy.name, uuid, StampedFile{{}, copy.stamp}.encoded()});
  }
  m_hasCopies = true;
  if (now != before) ++m_changed;
}

std::optional<IndexWriter::Known> IndexWriter::known(const EntryFileKey& key) {
  const QByteArray encoded = StampedFile::encodedKey(key);
  IndexDatabase::Rows rows =
      m_database.rows(u"SELECT id, file, digest FROM entry WHERE file >= ? AND file < ?"_s, {encoded, behind(encoded)});
  if (!rows.next()) return std::nullopt;
  const auto file = StampedFile::decoded(rows.value(1).toByteArray());
  if (file) return Known{rows.number(0), *file, rows.value(2).toByteArray()};
  m_database.fail(IndexFailure::Damaged, u"a row has no file"_s);
  return std::nullopt;
}

void IndexWriter::putEntry(EntryOrder& order, const EntryRecord& record) {
  const EntryOrderKey key = EntryOrderKey::of(record);
  if (const auto row = known(record.file.key)) {
    const bool isSame = row->digest == record.digest;
    if (isSame && (row->file.stamp.written == record.file.stamp.written || order.isInPlace(row->id, key))) {
      if (row->file.stamp != record.file.stamp)
        m_database.run(u"UPDATE entry SET file = ? WHERE id = ?"_s, {record.file.encoded(), row->id});
      return;
    }
    takeRow(row->id);
  }
  ++m_changed;
  auto id = order.place(key);
  if (!id) {
    makeRoom(order, key);
    id = order.place(key);
  }
  if (id) insertRow(*id, record);
}

// Renumbers the rows around the place of `key`.
void IndexWriter::makeRoom(EntryOrder& order, const EntryOrderKey& key) {
  const EntryOrder::Stretch stretch = order.stretchAround(key);
  std::vector<qint64> ids;
  {
    IndexDatabase::Rows rows =
        m_database.rows(u"SELECT id FROM entry WHERE id > ? AND id < ? ORDER BY id"_s, {stretch.below, stretch.above});
    while (rows.next()) ids.push_back(rows.number(0));
  }
  std::vector<EntryRecord> records;
  for (const qint64 id : ids)
    if (auto record = takeRow(id)) records.push_back(std::move(*record));
  const EntryOrder::Stretch numbers = EntryOrder::numbersFor(key, stretch);
  const qint64 step = (numbers.above - numbers.below) / (static_cast<qint64>(records.size()) + 1);
  qint64 id = numbers.below;
  for (const EntryRecord& record : records) insertRow(id += step, record);
  order.noteDisplaced();
}

void IndexWriter::insertRow(qint64 id, const EntryRecord& record) {
  m_database.run(
      u"INSERT INTO entry VALUES(?, ?, ?, ?, ?, ?, ?, ?)"_s,
      {id, record.file.encoded(), record.creation.timeIntervalSinceReferenceDate(),
       record.modification.timeIntervalSinceReferenceDate(), record.day.toJulianDay(),
       // Null would be something else than nothing.
       record.tags.isNull() ? u""_s : record.tags, record.place.isNull() ? u""_s : record.place, record.digest});
  m_database.run(u"INSERT INTO content VALUES(?, ?, ?, ?)"_s,
                 {id, record.text.isNull() ? QByteArray("") : record.text, record.details,
                  record.others.isNull() ? QByteArray("") : record.others});
  m_database.run(u"INSERT INTO words(rowid, text, tags, place, marks) VALUES(?, ?, ?, ?, ?)"_s,
                 wordValues(id, record.words));
}

std::optional<EntryRecord> IndexWriter::record(IndexDatabase& database, qint64 id) {
  IndexDatabase::Rows rows = database.rows(
      u"SELECT e.file, e.creation, e.modification, e.day, e.tags, e.place, e.digest, c.text, c.details, c.others "
      "FROM entry e JOIN content c ON c.id = e.id WHERE e.id = ?"_s,
      {id});
  if (rows.next()) {
    EntryRecord record;
    const auto file = StampedFile::decoded(rows.value(0).toByteArray());
    record.file = file.value_or(StampedFile());
    record.creation = Date(rows.value(1).toDouble());
    record.modification = Date(rows.value(2).toDouble());
    record.day = QDate::fromJulianDay(rows.number(3));
    record.tags = rows.value(4).toString();
    record.place = rows.value(5).toString();
    record.digest = rows.value(6).toByteArray();
    record.text = rows.value(7).toByteArray();
    record.details = rows.value(8).toByteArray();
    record.others = rows.value(9).toByteArray();
    if (file && record.computedDigest() == record.digest) return record;
  }
  database.fail(IndexFailure::Damaged, u"a row is not as it was written"_s);
  return std::nullopt;
}

// Removes a row and answers what it held, with its words.
std::optional<EntryRecord> IndexWriter::takeRow(qint64 id) {
  auto taken = record(m_database, id);
  if (!taken) return std::nullopt;
  // The full-text table does not know what it holds of a row.
  taken->words = taken->computedWords(m_prefixes);
  m_database.run(u"INSERT INTO words(words, rowid, text, tags, place, marks) VALUES('delete', ?, ?, ?, ?, ?)"_s,
                 wordValues(id, taken->words));
  m_database.run(u"DELETE FROM entry WHERE id = ?"_s, {id});
  m_database.run(u"DELETE FROM content WHERE id = ?"_s, {id});
  m_database.run(u"INSERT OR REPLACE INTO setting VALUES('untidy', 1)"_s);
  return taken;
}

void IndexWriter::putDamage(const FileReading& reading) {
  const QVariant reason = m_database.first(u"SELECT reason FROM damage WHERE name = ?"_s, {reading.name});
  const auto key = EntryFileKey::fromName(reading.name);
  if (const auto row = key ? known(*key) : std::nullopt) takeRow(row->id);
  if (reason.toString() != reading.damage) ++m_changed;
  m_database.run(u"INSERT OR REPLACE INTO damage VALUES(?, ?, ?)"_s,
                 {reading.name, StampedFile{{}, reading.stamp}.encoded(), reading.damage});
}

bool IndexWriter::removeName(const QByteArray& name) {
  const auto key = EntryFileKey::fromName(name);
  const auto row = key ? known(*key) : std::nullopt;
  if (row) takeRow(row->id);
  const bool wasDamaged = m_database.first(u"SELECT 1 FROM damage WHERE name = ?"_s, {name}).isValid();
  if (wasDamaged) m_database.run(u"DELETE FROM damage WHERE name = ?"_s, {name});
  return row || wasDamaged;
}

}  // namespace quillo
