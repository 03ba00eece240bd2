#pragma once

#include "qlcore/index/EntryFileStamp.h"
#include "qlcore/index/IndexDatabase.h"

#include <QString>

#include <functional>
#include <optional>

namespace quillo {

struct EntryRecord;

// What the order of entries goes by. The later of two is listed first where the newest come first.
struct EntryOrderKey {
  double creation{0};
  double modification{0};
  qint64 written{0};
  EntryFileKey file;

  [[nodiscard]] bool isBefore(const EntryOrderKey& other) const;
  [[nodiscard]] static EntryOrderKey of(const EntryRecord& record);
};

// Chooses the numbers of the entries' rows so that they rise with the order of the entries: the full-text table gives
// its rows by number, and so the newest or oldest of very many are found without looking at all of them.
//
// The number is made of the second of creation, with some room. Where several entries share a second, they take the
// next free numbers; the order is kept in any case.
class EntryOrder {
 public:
  // Within a transaction for writing.
  explicit EntryOrder(IndexDatabase& database);

  // A free number in its place; nothing where there is none, and then room has to be made around nearby().
  [[nodiscard]] std::optional<qint64> place(const EntryOrderKey& key);
  // Whether an entry with this key may stay where it is.
  [[nodiscard]] bool isInPlace(qint64 id, const EntryOrderKey& key);

  // The numbers between `below` and `above` are enough for the rows that have numbers between them, and for many more;
  // the place for `key` is among them.
  struct Stretch {
    qint64 below{0};
    qint64 above{0};
    qint64 count{0};  // of the rows
  };
  [[nodiscard]] Stretch stretchAround(const EntryOrderKey& key);
  // The numbers of that stretch over which its rows should be spread.
  [[nodiscard]] static Stretch numbersFor(const EntryOrderKey& key, const Stretch& stretch);
  // Rows were given numbers that their second does not lead to.
  void noteDisplaced();

  // The number of the first row whose creation is not before `instant` (seconds since the reference date), or one
  // larger than all.
  [[nodiscard]] static qint64 firstCreatedAt(IndexDatabase& database, double instant);

 private:
  struct Row {
    qint64 id{0};
    EntryOrderKey key;
  };
  [[nodiscard]] static std::optional<Row> rowFrom(IndexDatabase& database, const QString& sql, qint64 id);
  // The number of the first row for which `isBefore` does not hold; it holds for all rows up to some number.
  [[nodiscard]] static qint64 firstNot(IndexDatabase& database, qint64 guess,
                                       const std::function<bool(const EntryOrderKey&)>& isBefore);

  IndexDatabase& m_database;
  bool m_hasDisplaced;
};

}  // namespace quillo
