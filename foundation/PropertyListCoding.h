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

// Puts a list together from its pieces in the order of a text. Collections that are still open lie on a stack of its
// own, so that nesting costs no recursion.
class Builder {
 public:
  // These answer false, with problem() saying why, where the piece has no place.
  bool beginArray();
  bool beginDictionary();
  bool endCollection();
  // A key that is there already takes the later value.
  bool setKey(const QString& key);
  bool add(const PropertyListValue& value);
  // Short strings that repeat share their storage; most lists repeat the same few keys.
  bool addString(const QString& text);

  [[nodiscard]] bool isInArray() const { return !m_open.empty() && !m_open.back().isDictionary; }
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
  PropertyListValue shared(const QString& text);

  std::vector<Collection> m_open;
  std::optional<PropertyListValue> m_result;
  QHash<QString, PropertyListValue> m_strings;
  QString m_problem;
};

}  // namespace quillo::PropertyListCoding
