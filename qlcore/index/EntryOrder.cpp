#include "qlcore/index/EntryOrder.h"

#include "qlcore/index/EntryRecord.h"

#include <algorithm>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Numbers for each second.
constexpr qint64 room = 4;
// Larger than the numbers of the year 9999, with room for displaced rows.
constexpr qint64 endOfNumbers = qint64{1} << 42;

const QString& atOrBelow() {
  static const QString sql =
      u"SELECT id, creation, modification, file FROM entry WHERE id <= ? ORDER BY id DESC LIMIT 1"_s;
  return sql;
}

const QString& atOrAbove() {
  static const QString sql = u"SELECT id, creation, modification, file FROM entry WHERE id >= ? ORDER BY id LIMIT 1"_s;
  return sql;
}

// The first number of the second; they count from the year 1, so that all are positive.
qint64 firstOfSecond(double creation) {
  constexpr double yearOne = -63'113'904'000.0;
  const double second = std::floor(creation - yearOne);
  return (static_cast<qint64>(std::clamp(second, 0.0, 400e9)) + 1) * room;
}

}  // namespace

bool EntryOrderKey::isBefore(const EntryOrderKey& other) const {
  if (creation != other.creation) return creation < other.creation;
  if (modification != other.modification) return modification < other.modification;
  if (written != other.written) return written < other.written;
  return file.uuid > other.file.uuid;
}

EntryOrderKey EntryOrderKey::of(const EntryRecord& record) {
  return {record.creation.timeIntervalSinceReferenceDate(), record.modification.timeIntervalSinceReferenceDate(),
          record.file.stamp.written, record.file.key};
}

EntryOrder::EntryOrder(IndexDatabase& database)
    : m_database(database),
      m_hasDisplaced(database.first(u"SELECT value FROM setting WHERE name = 'displaced'"_s).isValid()) {}

std::optional<EntryOrder::Row> EntryOrder::rowFrom(IndexDatabase& database, const QString& sql, qint64 id) {
  IndexDatabase::Rows rows = database.rows(sql, {id});
  if (!rows.next()) return std::nullopt;
  const auto file = StampedFile::decoded(rows.value(3).toByteArray());
  if (!file) {
    database.fail(IndexFailure::Damaged, u"a row has no file"_s);
    return std::nullopt;
  }
  return Row{rows.number(0), {rows.value(1).toDouble(), rows.value(2).toDouble(), file->stamp.written, file->key}};
}

qint64 EntryOrder::firstNot(IndexDatabase& database, qint64 guess,
                            const std::function<bool(const EntryOrderKey&)>& isBefore) {
  // Rows at `low` and below are before, those at `high` and above are not. Both ends move away from the guess until
  // that is so; each turn does so at least eightfold or halves what is between.
  qint64 low = std::max<qint64>(guess - 1, 0);
  for (qint64 step = 64; low > 0; step *= 8) {
    const auto row = rowFrom(database, atOrBelow(), low);
    if (!row || isBefore(row->key)) break;
    low = std::max<qint64>(row->id - step, 0);
  }
  qint64 high = guess;
  for (qint64 step = 64;; step *= 8) {
    const auto row = rowFrom(database, atOrAbove(), high);
    if (!row) {
      high = endOfNumbers;
      break;
    }
    high = row->id;
    if (!isBefore(row->key)) break;
    low = std::max(low, row->id);
    high = row->id + step;
  }
  while (high - low > 1) {
    const qint64 middle = low + (high - low) / 2;
    const auto row = rowFrom(database, atOrBelow(), middle);
    if (!row || row->id <= low || isBefore(row->key))
      low = middle;
    else
      high = row->id;
  }
  const auto found = rowFrom(database, atOrAbove(), high);
  return found ? found->id : endOfNumbers;
}

qint64 EntryOrder::firstCreatedAt(IndexDatabase& database, double instant) {
  return firstNot(database, firstOfSecond(instant),
                  [instant](const EntryOrderKey& key) { return key.creation < instant; });
}

std::optional<qint64> EntryOrder::place(const EntryOrderKey& key) {
  const qint64 start = firstOfSecond(key.creation);
  const qint64 wanted = start + 1;
  const auto above = rowFrom(m_database, atOrAbove(), start);
  if (!m_hasDisplaced && (!above || above->id >= start + room)) return wanted;
  const qint64 next = firstNot(m_database, wanted, [&key](const EntryOrderKey& other) { return other.isBefore(key); });
  const auto before = rowFrom(m_database, atOrBelow(), next - 1);
  const qint64 previous = before ? before->id : 0;
  if (next - previous < 2) return std::nullopt;
  const qint64 id = std::clamp(wanted, previous + 1, next - 1);
  if (id < start || id >= start + room) noteDisplaced();
  return id;
}

bool EntryOrder::isInPlace(qint64 id, const EntryOrderKey& key) {
  const auto before = rowFrom(m_database, atOrBelow(), id - 1);
  const auto after = rowFrom(m_database, atOrAbove(), id + 1);
  return (!before || before->key.isBefore(key)) && (!after || key.isBefore(after->key));
}

EntryOrder::Stretch EntryOrder::stretchAround(const EntryOrderKey& key) {
  const qint64 next = firstNot(m_database, firstOfSecond(key.creation) + 1,
                               [&key](const EntryOrderKey& other) { return other.isBefore(key); });
  // Numbers are many times more than rows can be, so some stretch has room.
  Stretch stretch;
  for (qint64 half = 8;; half *= 4) {
    const auto end = [this](const QString& sql, const QVariantList& values, qint64 otherwise) {
      const QVariant id = m_database.first(sql, values);
      return id.isNull() ? otherwise : id.toLongLong();
    };
    stretch.below = end(u"SELECT id FROM entry WHERE id < ? ORDER BY id DESC LIMIT 1 OFFSET ?"_s, {next, half}, 0);
    stretch.above =
        end(u"SELECT id FROM entry WHERE id >= ? ORDER BY id LIMIT 1 OFFSET ?"_s, {next, half}, endOfNumbers);
    stretch.count =
        m_database.first(u"SELECT count(*) FROM entry WHERE id > ? AND id < ?"_s, {stretch.below, stretch.above})
            .toLongLong();
    const bool isAll = stretch.below == 0 && stretch.above == endOfNumbers;
    if (stretch.above - stretch.below > 4 * (stretch.count + 2) || isAll || m_database.failure() != IndexFailure::None)
      break;
  }
  return stretch;
}

EntryOrder::Stretch EntryOrder::numbersFor(const EntryOrderKey& key, const Stretch& stretch) {
  // Not further from their second than they need.
  const qint64 width = std::min(stretch.above - stretch.below, 16 * (stretch.count + 2));
  const qint64 below = std::clamp(firstOfSecond(key.creation) - width / 2, stretch.below, stretch.above - width);
  return {below, below + width, stretch.count};
}

void EntryOrder::noteDisplaced() {
  if (m_hasDisplaced) return;
  m_hasDisplaced = true;
  m_database.run(u"INSERT OR REPLACE INTO setting VALUES('displaced', 1)"_s);
}

}  // namespace quillo
