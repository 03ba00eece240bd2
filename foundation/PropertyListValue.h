#pragma once

#include "foundation/Date.h"
#include "foundation/StringMap.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace quillo {

// The value of a property list: null marker, boolean, integer, real, string, date, data, array or dictionary.
//
// Thirty-two bytes, whatever it holds. The text, the bytes and the items behind them are shared and copied on writing,
// each one allocation, so a large list read from disk costs a small multiple of its file.
class PropertyListValue {
 public:
  using Array = QList<PropertyListValue>;
  using Dictionary = StringMap<PropertyListValue>;

  // Marks a key to be removed. Never written to a file.
  struct Null {
    bool operator==(const Null&) const = default;
  };

  PropertyListValue() = default;
  PropertyListValue(Null) {}                                // NOLINT(google-explicit-constructor)
  PropertyListValue(bool value) : m_value(value) {}         // NOLINT(google-explicit-constructor)
  PropertyListValue(int value) : m_value(qint64{value}) {}  // NOLINT(google-explicit-constructor)
  PropertyListValue(qint64 value) : m_value(value) {}       // NOLINT(google-explicit-constructor)
  // Held as a signed integer where it fits, so that one number has one form.
  PropertyListValue(quint64 value);                                        // NOLINT(google-explicit-constructor)
  PropertyListValue(double value) : m_value(value) {}                      // NOLINT(google-explicit-constructor)
  PropertyListValue(Date value) : m_value(value) {}                        // NOLINT(google-explicit-constructor)
  PropertyListValue(QString value) : m_value(std::move(value)) {}          // NOLINT(google-explicit-constructor)
  PropertyListValue(QLatin1StringView value) : m_value(QString(value)) {}  // NOLINT(google-explicit-constructor)
  PropertyListValue(QByteArray value) : m_value(std::move(value)) {}       // NOLINT(google-explicit-constructor)
  PropertyListValue(Array value) : m_value(std::move(value)) {}            // NOLINT(google-explicit-constructor)
  PropertyListValue(Dictionary value) : m_value(std::move(value)) {}       // NOLINT(google-explicit-constructor)
  // A string literal would otherwise turn into a boolean.
  PropertyListValue(const char*) = delete;
  PropertyListValue(const char16_t*) = delete;

  [[nodiscard]] bool isNull() const { return std::holds_alternative<Null>(m_value); }
  [[nodiscard]] bool isBool() const { return std::holds_alternative<bool>(m_value); }
  // An integer of either sign; a boolean is not one.
  [[nodiscard]] bool isInteger() const;
  [[nodiscard]] bool isUnsigned64() const { return std::holds_alternative<quint64>(m_value); }
  [[nodiscard]] bool isReal() const { return std::holds_alternative<double>(m_value); }
  // Boolean, integer or real.
  [[nodiscard]] bool isNumber() const { return isBool() || isInteger() || isReal(); }
  [[nodiscard]] bool isDate() const { return std::holds_alternative<Date>(m_value); }
  [[nodiscard]] bool isString() const { return std::holds_alternative<QString>(m_value); }
  [[nodiscard]] bool isData() const { return std::holds_alternative<QByteArray>(m_value); }
  [[nodiscard]] bool isArray() const { return std::holds_alternative<Array>(m_value); }
  [[nodiscard]] bool isDictionary() const { return std::holds_alternative<Dictionary>(m_value); }

  // The content where the value is of that kind, else an empty one. Of a temporary a copy, which outlives it.
  [[nodiscard]] const QString& string() const&;
  [[nodiscard]] QString string() && { return std::as_const(*this).string(); }
  [[nodiscard]] const QByteArray& data() const&;
  [[nodiscard]] QByteArray data() && { return std::as_const(*this).data(); }
  [[nodiscard]] const Array& array() const&;
  [[nodiscard]] Array array() && { return std::as_const(*this).array(); }
  [[nodiscard]] const Dictionary& dictionary() const&;
  [[nodiscard]] Dictionary dictionary() && { return std::as_const(*this).dictionary(); }
  [[nodiscard]] std::optional<Date> date() const;

  // Numbers and strings convert by the platform's rules ("YES", "12abc" is 12); every other kind reads as NO or 0.
  // Out-of-range numbers stop at the nearest limit; NaN reads as 0.
  [[nodiscard]] bool boolValue() const;
  [[nodiscard]] qint64 integerValue() const;
  // As integerValue, with the bits of an unsigned 64-bit integer kept; negative numbers wrap.
  [[nodiscard]] quint64 unsignedIntegerValue() const;
  // The same in 32 bits: of an integer the low ones, while strings and reals stop at the nearest limit.
  [[nodiscard]] qint32 intValue() const;
  [[nodiscard]] quint32 unsignedIntValue() const;
  [[nodiscard]] double doubleValue() const;

  // By value across the number kinds (true == 1 == 1.0), never across a number and a string.
  bool operator==(const PropertyListValue& other) const;

  // For log lines and test failures; nested collections beyond a few levels are abbreviated.
  [[nodiscard]] QString description() const;

 private:
  std::variant<Null, bool, qint64, quint64, double, Date, QString, QByteArray, Array, Dictionary> m_value;
};

using PropertyListArray = PropertyListValue::Array;
using PropertyListDictionary = PropertyListValue::Dictionary;

void PrintTo(const PropertyListValue& value, std::ostream* stream);

}  // namespace quillo

// Numbers and shared pointers: a growing list may move them as bytes.
Q_DECLARE_TYPEINFO(quillo::PropertyListValue, Q_RELOCATABLE_TYPE);
