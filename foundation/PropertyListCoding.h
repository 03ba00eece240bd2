#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/PropertyListValue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

// The parts that PropertyListSerialization is made of: a reader and a writer for each form. Not for other callers.
namespace quillo::PropertyListCoding {

// `text` is in UTF-8, whatever its declaration names.
[[nodiscard]] std::optional<PropertyListValue> readXML(QByteArrayView text, Error* error);
[[nodiscard]] std::optional<PropertyListValue> readOpenStep(const QString& text, Error* error);
[[nodiscard]] std::optional<PropertyListValue> readBinary(const QByteArray& data, Error* error);

[[nodiscard]] std::optional<QByteArray> writeXML(const PropertyListValue& value, Error* error);
[[nodiscard]] std::optional<QByteArray> writeBinary(const PropertyListValue& value, Error* error);

[[nodiscard]] Error readError(const QString& reason);
// `path`: the keys and "[indexes]" that lead to the value at fault, outermost first.
[[nodiscard]] Error writeError(const QString& reason, const QStringList& path = {});

// What the values of a list may take of memory while it is read, so that no file makes the process take a hundred times
// its size: seven bytes for each of the file's, and 32 MiB, which no list of settings comes near. Counted roughly, from
// what the allocator makes of each kind of value.
class MemoryAllowance {
 public:
  static constexpr qint64 object = 40;  // the binary form's table
  static constexpr qint64 string = 48;  // and its text
  static constexpr qint64 array = 80;   // and its items
  static constexpr qint64 item = 32;
  static constexpr qint64 dictionary = 96;  // and its entries
  static constexpr qint64 entry = 80;
  static constexpr qint64 attribute = 64;  // which the parser remembers

  explicit MemoryAllowance(qsizetype fileSize) : m_left(fileSize * 7 + qint64{32} * 1024 * 1024) {}
  // False once it is used up.
  bool take(qint64 bytes) { return (m_left -= bytes) >= 0; }

 private:
  qint64 m_left;
};

// Short strings that come again and again, to be shared. Each has one place by its characters, and takes it from the
// one before it, so this is quick and never grows, whatever a file holds.
class RecentStrings {
 public:
  static constexpr qsizetype longest = 64;

  // `text`, shared where it is here already; `isNew` receives whether it had to be made.
  QString shared(QStringView text, bool* isNew = nullptr);

 private:
  struct Place {
    size_t mixed{0};  // the characters of the string that came last
    QString string;   // null until it has come twice
  };
  static constexpr size_t places = 512;
  std::unique_ptr<Place[]> m_places;  // made at the first string
};

// `text` as a key of a dictionary. Lists of one kind have the same few keys, so they are shared from one list to the
// next, too, for each thread.
[[nodiscard]] QString sharedKey(QStringView text, bool* isNew = nullptr);

// Puts a list together from its pieces in the order of a text. Collections that are still open lie on a stack of its
// own, so that nesting costs no recursion.
class Builder {
 public:
  explicit Builder(qsizetype textLength) : m_memory(textLength) {}

  // These answer false, with problem() saying why, where the piece has no place.
  bool beginArray() { return begin(false); }
  bool beginDictionary() { return begin(true); }
  bool endCollection();
  // A key that is there already takes the later value.
  bool setKey(QStringView key);
  bool add(PropertyListValue value);
  // Short strings that repeat share their storage.
  bool addString(QStringView text);
  // Memory that reading takes beside the values.
  bool take(qint64 bytes);

  [[nodiscard]] bool isInDictionary() const { return !m_open.empty() && m_open.back().isDictionary; }
  [[nodiscard]] size_t depth() const { return m_open.size(); }
  [[nodiscard]] const QString& problem() const { return m_problem; }
  // The whole list, once its top value is complete.
  [[nodiscard]] const std::optional<PropertyListValue>& result() const { return m_result; }

 private:
  struct Collection {
    bool isDictionary;
    bool hasKey;      // the last entry waits for its value
    qsizetype first;  // of its items or entries
  };
  bool begin(bool dictionary);
  bool refuse(const QString& problem);
  bool refuseKeyWithoutValue();

  std::vector<Collection> m_open;
  // Of all open collections, those of the outer ones first.
  PropertyListArray m_items;
  PropertyListDictionary::Entries m_entries;
  std::optional<PropertyListValue> m_result;
  RecentStrings m_strings;
  MemoryAllowance m_memory;
  QString m_problem;
};

}  // namespace quillo::PropertyListCoding
