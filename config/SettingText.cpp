#include "config/SettingText.h"

#include "foundation/PropertyListJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QUrl>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

std::optional<PropertyListValue> parseBool(const QString& text) {
  for (const auto& word : {u"true"_s, u"yes"_s, u"on"_s, u"1"_s})
    if (text.compare(word, Qt::CaseInsensitive) == 0) return true;
  for (const auto& word : {u"false"_s, u"no"_s, u"off"_s, u"0"_s})
    if (text.compare(word, Qt::CaseInsensitive) == 0) return false;
  return std::nullopt;
}

std::optional<PropertyListValue> parseInteger(const QString& text) {
  bool ok = false;
  if (const qint64 number = text.toLongLong(&ok); ok) return number;
  if (const quint64 number = text.toULongLong(&ok); ok) return number;
  return std::nullopt;
}

std::optional<PropertyListValue> parseJson(const QString& text) {
  // Wrapped, because a document must be a collection and a setting need not be.
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson("[" + text.toUtf8() + "]", &error);
  if (error.error != QJsonParseError::NoError || document.array().size() != 1) return std::nullopt;
  return propertyListFromJson(document.array().first());
}

}  // namespace

QString bareText(const PropertyListValue& value) {
  if (value.isString()) return QString(value.string()).replace(u'\n', u"\\n"_s).replace(u'\r', u"\\r"_s);
  if (value.isBool()) return value.boolValue() ? u"true"_s : u"false"_s;
  if (value.isUnsigned64()) return QString::number(value.unsignedIntegerValue());
  if (value.isInteger()) return QString::number(value.integerValue());
  if (value.isReal()) return QString::number(value.doubleValue(), 'g', QLocale::FloatingPointShortest);
  const QJsonValue json = jsonFromPropertyList(value);
  if (json.isObject()) return QString::fromUtf8(QJsonDocument(json.toObject()).toJson(QJsonDocument::Compact));
  if (json.isArray()) return QString::fromUtf8(QJsonDocument(json.toArray()).toJson(QJsonDocument::Compact));
  return json.toString();
}

std::optional<PropertyListValue> settingFromText(const QString& text, SettingType type) {
  switch (type) {
    case SettingType::Bool:
      return parseBool(text);
    case SettingType::Integer:
      return parseInteger(text);
    case SettingType::Real: {
      bool ok = false;
      const double number = text.toDouble(&ok);
      return ok ? std::optional<PropertyListValue>(number) : std::nullopt;
    }
    case SettingType::String:
      return text;
    case SettingType::Path:
      return text.startsWith(u'/') || text.startsWith(u'~') ? std::optional<PropertyListValue>(text) : std::nullopt;
    case SettingType::URL:
      return QUrl(text).scheme().isEmpty() ? std::nullopt : std::optional<PropertyListValue>(text);
    case SettingType::Date: {
      const auto date = Date::fromISO8601(text);
      return date ? std::optional<PropertyListValue>(*date) : std::nullopt;
    }
    case SettingType::Data: {
      const auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
      return decoded ? std::optional<PropertyListValue>(*decoded) : std::nullopt;
    }
    case SettingType::Dictionary: {
      const auto value = parseJson(text);
      return value && value->isDictionary() ? value : std::nullopt;
    }
    case SettingType::Object:
      return parseJson(text);
  }
  return std::nullopt;
}

QString expectedText(SettingType type) {
  switch (type) {
    case SettingType::Bool:
      return u"true or false"_s;
    case SettingType::Integer:
      return u"a whole number"_s;
    case SettingType::Real:
      return u"a number"_s;
    case SettingType::Path:
      return u"an absolute path"_s;
    case SettingType::URL:
      return u"an absolute URL"_s;
    case SettingType::Date:
      return u"a date such as 2014-03-10T21:00:00Z"_s;
    case SettingType::Data:
      return u"base64"_s;
    case SettingType::Dictionary:
      return u"a JSON object"_s;
    default:
      return u"JSON"_s;
  }
}

QString absentText(const Setting& setting) {
  const QString note = setting.note.isEmpty() ? QString() : u"; "_s + setting.note;
  if (const auto value = setting.defaultValue())
    return u"%1 = %2 (default%3)"_s.arg(setting.key, bareText(*value), note);
  return u"%1 is not set%2"_s.arg(setting.key, note);
}

}  // namespace quillo
