#include "foundation/PropertyListJson.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>

namespace quillo {

QJsonValue jsonFromPropertyList(const PropertyListValue& value) {
  if (value.isBool()) return value.boolValue();
  if (value.isUnsigned64()) return QString::number(value.unsignedIntegerValue());
  if (value.isInteger()) return value.integerValue();
  if (value.isReal())
    return std::isfinite(value.doubleValue()) ? QJsonValue(value.doubleValue())
                                              : QJsonValue(QString::number(value.doubleValue()));
  if (value.isString()) return value.string();
  if (const auto date = value.date()) return date->toISO8601();
  if (value.isData()) return QString::fromLatin1(value.data().toBase64());
  if (value.isArray()) {
    QJsonArray array;
    for (const auto& item : value.array()) array.append(jsonFromPropertyList(item));
    return array;
  }
  if (value.isDictionary()) {
    QJsonObject object;
    const auto& dictionary = value.dictionary();
    for (auto it = dictionary.begin(); it != dictionary.end(); ++it) object[it.key()] = jsonFromPropertyList(*it);
    return object;
  }
  return QJsonValue::Null;
}

PropertyListValue propertyListFromJson(const QJsonValue& value) {
  switch (value.type()) {
    case QJsonValue::Bool:
      return value.toBool();
    case QJsonValue::Double: {
      // toVariant keeps an integer that the text wrote as one.
      const QVariant number = value.toVariant();
      if (number.typeId() == QMetaType::LongLong) return qint64{number.toLongLong()};
      return value.toDouble();
    }
    case QJsonValue::String:
      return value.toString();
    case QJsonValue::Array: {
      PropertyListArray array;
      for (const auto& item : value.toArray()) array.append(propertyListFromJson(item));
      return array;
    }
    case QJsonValue::Object: {
      PropertyListDictionary dictionary;
      const QJsonObject object = value.toObject();
      for (auto it = object.begin(); it != object.end(); ++it) dictionary.insert(it.key(), propertyListFromJson(*it));
      return dictionary;
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
      break;
  }
  return PropertyListValue::Null{};
}

}  // namespace quillo
