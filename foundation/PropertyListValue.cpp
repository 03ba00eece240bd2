#include "foundation/PropertyListValue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestInteger = std::numeric_limits<qint64>::max();
constexpr qint64 smallestInteger = std::numeric_limits<qint64>::min();
// 2^63 and 2^64 are exact in a double; the largest integers below them are not.
constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

qint64 clampedInteger(double value) {
  if (std::isnan(value)) return 0;
  if (value >= twoTo63) return largestInteger;
  if (value < -twoTo63) return smallestInteger;
  return static_cast<qint64>(value);
}

// The decimal integer that the text begins with, after white space and a sign; what follows it is ignored.
qint64 leadingInteger(const QString& text) {
  qsizetype at = 0;
  while (at < text.size() && text[at].isSpace()) ++at;
  bool negative = false;
  if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) negative = text[at++] == u'-';
  qint64 value = 0;
  for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
    const qint64 digit = text[at].unicode() - u'0';
    if (__builtin_mul_overflow(value, qint64{10}, &value) ||
        __builtin_add_overflow(value, negative ? -digit : digit, &value))
      return negative ? smallestInteger : largestInteger;
  }
  return value;
}

// Whether a number without an exponent is below one: "0.000…1" can be too small for a double, "1000…" too large.
bool mantissaIsSmall(const QByteArray& digits) {
  for (const char c : digits) {
    if (c == '.') return true;
    if (c >= '1' && c <= '9') return false;
  }
  return true;
}

// The decimal number that the text begins with; 0 where there is none.
double leadingDouble(const QString& text) {
  const QByteArray latin = text.trimmed().left(400).toLatin1();
  qsizetype end = 0;
  const auto digits = [&] {
    const qsizetype start = end;
    while (end < latin.size() && latin[end] >= '0' && latin[end] <= '9') ++end;
    return end > start;
  };
  if (end < latin.size() && (latin[end] == '-' || latin[end] == '+')) ++end;
  bool some = digits();
  if (end < latin.size() && latin[end] == '.') {
    ++end;
    some = digits() || some;
  }
  if (!some) return 0;
  const qsizetype mantissa = end;
  if (end < latin.size() && (latin[end] == 'e' || latin[end] == 'E')) {
    ++end;
    if (end < latin.size() && (latin[end] == '-' || latin[end] == '+')) ++end;
    if (!digits()) end = mantissa;
  }
  bool ok = false;
  const double value = latin.left(end).toDouble(&ok);
  if (ok) return value;
  // The only text of this shape that does not convert is one out of range: too small for a double, or infinite.
  if (latin.left(end).toLower().contains("e-") || mantissaIsSmall(latin.left(mantissa))) return 0;
  return latin.startsWith('-') ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
}

// "YES", "true" and their like by the first letter, and numbers that are not zero, after white space, a sign and zeros.
bool leadingBool(const QString& text) {
  qsizetype at = 0;
  while (at < text.size() && text[at].isSpace()) ++at;
  if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) ++at;
  while (at < text.size() && text[at] == u'0') ++at;
  if (at >= text.size()) return false;
  const char16_t first = text[at].unicode();
  return first == u'Y' || first == u'y' || first == u'T' || first == u't' || (first >= u'1' && first <= u'9');
}

bool equalNumbers(qint64 integer, double real) {
  // Compared as integers: large integers would lose digits as reals.
  return real >= -twoTo63 && real < twoTo63 && std::trunc(real) == real && static_cast<qint64>(real) == integer;
}

bool equalNumbers(quint64 integer, double real) {
  return real >= 0 && real < twoTo64 && std::trunc(real) == real && static_cast<quint64>(real) == integer;
}

QString describe(const PropertyListValue& value, int levels) {
  if (value.isNull()) return u"<null>"_s;
  if (value.isBool()) return value.boolValue() ? u"true"_s : u"false"_s;
  if (value.isUnsigned64()) return QString::number(value.unsignedIntegerValue());
  if (value.isInteger()) return QString::number(value.integerValue());
  if (value.isReal()) return QString::number(value.doubleValue(), 'g', 17);
  if (value.isString()) return value.string();
  if (const auto date = value.date()) return date->description();
  if (value.isData()) return u"<%1 bytes>"_s.arg(value.data().size());
  QStringList parts;
  // A line of the log has no use for more; the bound also keeps shared collections from multiplying.
  constexpr int shown = 40;
  if (value.isArray()) {
    if (levels == 0) return u"(%1 items)"_s.arg(value.array().size());
    for (const auto& item : value.array().first(std::min<qsizetype>(shown, value.array().size())))
      parts << describe(item, levels - 1);
    return u'(' + parts.join(u", "_s) + u')';
  }
  if (levels == 0) return u"{%1 keys}"_s.arg(value.dictionary().size());
  for (auto it = value.dictionary().begin(); it != value.dictionary().end() && parts.size() < shown; ++it)
    parts << it.key() + u" = "_s + describe(it.value(), levels - 1);
  return u'{' + parts.join(u"; "_s) + u'}';
}

}  // namespace

PropertyListValue::PropertyListValue(quint64 value) {
  if (value <= static_cast<quint64>(largestInteger))
    m_value = static_cast<qint64>(value);
  else
    m_value = value;
}

bool PropertyListValue::isInteger() const {
  return std::holds_alternative<qint64>(m_value) || std::holds_alternative<quint64>(m_value);
}

const QString& PropertyListValue::string() const& {
  static const QString none;
  const auto* content = std::get_if<QString>(&m_value);
  return content ? *content : none;
}

const QByteArray& PropertyListValue::data() const& {
  static const QByteArray none;
  const auto* content = std::get_if<QByteArray>(&m_value);
  return content ? *content : none;
}

const PropertyListArray& PropertyListValue::array() const& {
  static const Array none;
  const auto* content = std::get_if<Array>(&m_value);
  return content ? *content : none;
}

const PropertyListDictionary& PropertyListValue::dictionary() const& {
  static const Dictionary none;
  const auto* content = std::get_if<Dictionary>(&m_value);
  return content ? *content : none;
}

std::optional<Date> PropertyListValue::date() const {
  const auto* date = std::get_if<Date>(&m_value);
  return date ? std::optional(*date) : std::nullopt;
}

bool PropertyListValue::boolValue() const {
  if (const auto* value = std::get_if<bool>(&m_value)) return *value;
  if (const auto* value = std::get_if<qint64>(&m_value)) return *value != 0;
  if (isUnsigned64()) return true;
  if (const auto* value = std::get_if<double>(&m_value)) return *value != 0;
  return leadingBool(string());
}

qint64 PropertyListValue::integerValue() const {
  if (const auto* value = std::get_if<bool>(&m_value)) return *value ? 1 : 0;
  if (const auto* value = std::get_if<qint64>(&m_value)) return *value;
  if (isUnsigned64()) return largestInteger;
  if (const auto* value = std::get_if<double>(&m_value)) return clampedInteger(*value);
  return leadingInteger(string());
}

quint64 PropertyListValue::unsignedIntegerValue() const {
  if (const auto* value = std::get_if<quint64>(&m_value)) return *value;
  if (const auto* value = std::get_if<double>(&m_value); value && *value >= twoTo63)
    return *value >= twoTo64 ? std::numeric_limits<quint64>::max() : static_cast<quint64>(*value);
  return static_cast<quint64>(integerValue());
}

qint32 PropertyListValue::intValue() const {
  if (isBool() || isInteger()) return static_cast<qint32>(unsignedIntegerValue());
  return static_cast<qint32>(
      std::clamp<qint64>(integerValue(), std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
}

quint32 PropertyListValue::unsignedIntValue() const {
  if (isBool() || isInteger()) return static_cast<quint32>(unsignedIntegerValue());
  return static_cast<quint32>(std::clamp<qint64>(integerValue(), 0, std::numeric_limits<quint32>::max()));
}

double PropertyListValue::doubleValue() const {
  if (const auto* value = std::get_if<bool>(&m_value)) return *value ? 1 : 0;
  if (const auto* value = std::get_if<qint64>(&m_value)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<quint64>(&m_value)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<double>(&m_value)) return *value;
  return leadingDouble(string());
}

bool PropertyListValue::operator==(const PropertyListValue& other) const {
  if (isNumber() && other.isNumber()) {
    if (isReal() && other.isReal()) return doubleValue() == other.doubleValue();
    if (isReal()) return other == *this;
    if (other.isReal())
      return isUnsigned64() ? equalNumbers(unsignedIntegerValue(), other.doubleValue())
                            : equalNumbers(integerValue(), other.doubleValue());
    return isUnsigned64() == other.isUnsigned64() && unsignedIntegerValue() == other.unsignedIntegerValue();
  }
  return m_value == other.m_value;
}

QString PropertyListValue::description() const {
  return describe(*this, 3);
}

void PrintTo(const PropertyListValue& value, std::ostream* stream) {
  *stream << value.description().toStdString();
}

}  // namespace quillo
