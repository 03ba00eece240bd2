#pragma once

#include "foundation/Error.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/PropertyListValue.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

// The parts that PropertyListSerialization is made of: a reader and a writer for each form. Not for other callers.
namespace quillo::PropertyListCoding {

[[nodiscard]] std::optional<PropertyListValue> readXML(const QString& text, Error* error);
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
  static constexpr qint64 object = 24;  // the binary form's table
  static constexpr qint64 string = 64;  // and its text
  static constexpr qint64 array = 96;   // and its items
  static constexpr qint64 item = 16;
  static constexpr qint64 dictionary = 112;  // and its entries
  static constexpr qint64 entry = 80;

  explicit MemoryAllowance(qsizetype fileSize) : m_left(fileSize * 7 + qint64{32} * 1024 * 1024) {}
  // False once it is used up.
  bool take(qint64 bytes) { return (m_left -= bytes) >= 0; }

 private:
  qint64 m_left;
};

// Puts a list together from its pieces in the order of a text. Collections that are still open lie on a stack of its
// own, so that nesting costs no recursion.
class Builder {
 public:
  explicit Builder(qsizetype textLength) : m_memory(textLength) {}

  // These answer false, with problem() saying why, where the piece has no place.
  bool beginArray();
  bool beginDictionary();
  bool endCollection();
  // A key that is there already takes the later value.
  bool setKey(const QString& key);
  bool add(const PropertyListValue& value);
  // Short strings that repeat share their storage; most lists repeat the same few keys.
  bool addString(const QString& text);

  [[nodiscard]] bool isInDictionary() const { return !m_open.empty() && m_open.back().isDictionary; }
  [[nodiscard]] size_t depth() const { return m_open.size(); }
  [[nodiscard]] const QString& problem() const { return m_problem; }
  // The whole list, once its top value is complete.
  [[nodiscard]] const std::optional<PropertyListValue>& result() const { return m_result; }

 private:
  struct Collection {
    bool isDictionary{false};
    bool hasKey{false};
    QString key;
    PropertyListArray items;
    PropertyListDictionary entries;
  };
  bool begin(bool dictionary);
  bool refuse(const QString& problem);
  std::optional<PropertyListValue> shared(const QString& text);
  bool take(qint64 bytes);

  std::vector<Collection> m_open;
  std::optional<PropertyListValue> m_result;
  QHash<QString, PropertyListValue> m_strings;
  MemoryAllowance m_memory;
  QString m_problem;
};

}  // namespace quillo::PropertyListCoding
