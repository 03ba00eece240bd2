#include "exchange/TypedJson.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString dateKind = u"$date"_s;
const QString dataKind = u"$data"_s;
const QString realKind = u"$real"_s;
const QString integerKind = u"$integer"_s;
const QString dictionaryKind = u"$dictionary"_s;

QJsonObject marked(const QString& kind, const QJsonValue& value) {
  return {{kind, value}};
}

// Finite numbers with a fraction stand for themselves: a reader cannot take them for integers.
QJsonValue realJson(double value) {
  if (!std::isfinite(value)) return marked(realKind, QString::number(value));
  return std::trunc(value) == value ? QJsonValue(marked(realKind, value)) : QJsonValue(value);
}

// Text where it says all, else seconds since the beginning of 2001.
QJsonValue dateJson(Date date) {
  const QString text = date.toISO8601();
  if (Date::fromISO8601(text) == date) return marked(dateKind, text);
  const double seconds = date.timeIntervalSinceReferenceDate();
  return marked(dateKind, std::isfinite(seconds) ? QJsonValue(seconds) : QJsonValue(QString::number(seconds)));
}

QJsonValue dictionaryJson(const PropertyListDictionary& dictionary) {
  QJsonObject object;
  for (auto it = dictionary.begin(); it != dictionary.end(); ++it) object[it.key()] = typedJson(*it);
  const bool looksMarked = object.size() == 1 && object.constBegin().key().startsWith(u'$');
  return looksMarked ? marked(dictionaryKind, object) : object;
}

std::optional<double> doubleOf(const QJsonValue& json) {
  if (json.isDouble()) return json.toDouble();
  bool isNumber = false;
  const double value = json.toString().toDouble(&isNumber);
  return isNumber ? std::optional(value) : std::nullopt;
}

std::optional<PropertyListValue> dictionaryOf(const QJsonObject& object) {
  PropertyListDictionary dictionary;
  for (auto it = object.begin(); it != object.end(); ++it) {
    auto value = valueOfTypedJson(it.value());
    if (!value) return std::nullopt;
    dictionary.insert(it.key(), *std::move(value));
  }
  return dictionary;
}

std::optional<PropertyListValue> dateOf(const QJsonValue& json) {
  if (const auto date = Date::fromISO8601(json.toString())) return *date;
  const auto seconds = doubleOf(json);
  return seconds ? std::optional<PropertyListValue>(Date(*seconds)) : std::nullopt;
}

std::optional<PropertyListValue> integerOf(const QString& text) {
  bool fits = false;
  if (const qint64 value = text.toLongLong(&fits); fits) return value;
  const quint64 value = text.toULongLong(&fits);
  return fits ? std::optional<PropertyListValue>(value) : std::nullopt;
}

std::optional<PropertyListValue> dataOf(const QJsonValue& json) {
  auto decoded = QByteArray::fromBase64Encoding(json.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
  return json.isString() && decoded ? std::optional<PropertyListValue>(*decoded) : std::nullopt;
}

std::optional<PropertyListValue> markedValue(const QString& kind, const QJsonValue& json) {
  if (kind == dateKind) return dateOf(json);
  if (kind == dataKind) return dataOf(json);
  if (kind == integerKind) return integerOf(json.toString());
  if (kind == dictionaryKind && json.isObject()) return dictionaryOf(json.toObject());
  if (kind != realKind) return std::nullopt;
  const auto real = doubleOf(json);
  return real ? std::optional<PropertyListValue>(*real) : std::nullopt;
}

std::optional<PropertyListValue> arrayOf(const QJsonArray& json) {
  PropertyListArray array;
  for (const auto& item : json) {
    auto value = valueOfTypedJson(item);
    if (!value) return std::nullopt;
    array << *std::move(value);
  }
  return array;
}

// An integer that the text wrote as one comes back as one.
PropertyListValue numberOf(const QJsonValue& json) {
  const QVariant number = json.toVariant();
  if (number.typeId() == QMetaType::LongLong) return qint64{number.toLongLong()};
  return json.toDouble();
}

}  // namespace

QJsonValue typedJson(const PropertyListValue& value) {
  if (value.isBool()) return value.boolValue();
  if (value.isUnsigned64()) return marked(integerKind, QString::number(value.unsignedIntegerValue()));
  if (value.isInteger()) return value.integerValue();
  if (value.isReal()) return realJson(value.doubleValue());
  if (value.isString()) return value.string();
  if (const auto date = value.date()) return dateJson(*date);
  if (value.isData()) return marked(dataKind, QString::fromLatin1(value.data().toBase64()));
  if (value.isDictionary()) return dictionaryJson(value.dictionary());
  if (!value.isArray()) return QJsonValue::Null;
  QJsonArray array;
  for (const auto& item : value.array()) array << typedJson(item);
  return array;
}

std::optional<PropertyListValue> valueOfTypedJson(const QJsonValue& json) {
  switch (json.type()) {
    case QJsonValue::Bool:
      return json.toBool();
    case QJsonValue::Double:
      return numberOf(json);
    case QJsonValue::String:
      return json.toString();
    case QJsonValue::Array:
      return arrayOf(json.toArray());
    case QJsonValue::Object: {
      const QJsonObject object = json.toObject();
      const bool isMarked = object.size() == 1 && object.constBegin().key().startsWith(u'$');
      return isMarked ? markedValue(object.constBegin().key(), object.constBegin().value()) : dictionaryOf(object);
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
      break;
  }
  return std::nullopt;
}

}  // namespace quillo
