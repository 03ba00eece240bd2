#include "exchange/EntryJson.h"

#include "exchange/TypedJson.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QJsonArray>

#include <array>

namespace quillo::EntryJson {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView otherFields{"otherFields"};

enum class Kind { Text, Date, Number, Texts, Location, Weather };
struct Key {
  QLatin1StringView name;
  Kind kind;
  const char* problem;  // of a value of another kind
};

constexpr std::array entryKeys{
    Key{EntryFields::text, Kind::Text, "its text is no string"},
    Key{EntryFields::creationDate, Kind::Date, "its creationDate is no date with a zone"},
    Key{EntryFields::modificationDate, Kind::Date, "its modificationDate is no date with a zone"},
    Key{EntryFields::timeZone, Kind::Text, "its timeZone is no string"},
    Key{EntryFields::tags, Kind::Texts, "its tags are no list of strings"},
    Key{EntryFields::location, Kind::Location, "its location is none"},
    Key{EntryFields::weather, Kind::Weather, "its weather is none"},
};
constexpr std::array locationKeys{
    Key{QLatin1StringView("latitude"), Kind::Number, ""},
    Key{QLatin1StringView("longitude"), Kind::Number, ""},
    Key{QLatin1StringView("placeName"), Kind::Text, ""},
};
constexpr std::array weatherKeys{
    Key{QLatin1StringView("temperature"), Kind::Number, ""}, Key{QLatin1StringView("symbolCode"), Kind::Text, ""},
    Key{QLatin1StringView("text"), Kind::Text, ""},          Key{QLatin1StringView("date"), Kind::Date, ""},
    Key{QLatin1StringView("provider"), Kind::Text, ""},
};

QJsonValue plainJson(Kind kind, const PropertyListValue& value);
std::optional<PropertyListValue> plainValue(Kind kind, const QJsonValue& json);

// Those of the keys whose values are of their kind.
template <typename Keys>
QJsonObject plainObject(const Keys& keys, const PropertyListDictionary& fields) {
  QJsonObject object;
  for (const Key& key : keys)
    if (const QJsonValue json = plainJson(key.kind, fields.value(key.name)); !json.isUndefined())
      object[key.name] = json;
  return object;
}

template <typename Keys>
std::optional<PropertyListValue> plainDictionary(const Keys& keys, const QJsonValue& json) {
  if (!json.isObject()) return std::nullopt;
  PropertyListDictionary fields;
  for (const Key& key : keys) {
    const QJsonValue part = json[key.name];
    if (part.isUndefined()) continue;
    auto value = plainValue(key.kind, part);
    if (!value) return std::nullopt;
    fields.insert(key.name, *std::move(value));
  }
  return fields;
}

QJsonArray textsIn(const PropertyListArray& array) {
  QJsonArray texts;
  for (const auto& item : array)
    if (item.isString()) texts << item.string();
  return texts;
}

std::optional<PropertyListValue> textsOf(const QJsonArray& json) {
  PropertyListArray texts;
  for (const auto& item : json) {
    if (!item.isString()) return std::nullopt;
    texts << item.toString();
  }
  return texts;
}

QJsonValue dateJson(Date date) {
  // Where the entry has a date that people do not write, it stands under the other fields.
  return date.toDateTime().isValid() ? QJsonValue(date.toISO8601()) : QJsonValue(QJsonValue::Undefined);
}

// Undefined where the value is of another kind.
QJsonValue plainJson(Kind kind, const PropertyListValue& value) {
  const auto given = [](bool isOfKind, auto make) { return isOfKind ? make() : QJsonValue(QJsonValue::Undefined); };
  switch (kind) {
    case Kind::Text:
      return given(value.isString(), [&] { return QJsonValue(value.string()); });
    case Kind::Date:
      return given(value.isDate(), [&] { return dateJson(*value.date()); });
    case Kind::Number:
      // JSON has no other numbers.
      return given(value.isNumber() && qIsFinite(value.doubleValue()), [&] { return QJsonValue(value.doubleValue()); });
    case Kind::Texts:
      return given(value.isArray(), [&] { return QJsonValue(textsIn(value.array())); });
    case Kind::Location:
      return given(value.isDictionary(), [&] { return QJsonValue(plainObject(locationKeys, value.dictionary())); });
    case Kind::Weather:
      return given(value.isDictionary(), [&] { return QJsonValue(plainObject(weatherKeys, value.dictionary())); });
  }
  return QJsonValue::Undefined;
}

std::optional<PropertyListValue> plainValue(Kind kind, const QJsonValue& json) {
  switch (kind) {
    case Kind::Text:
      return json.isString() ? std::optional<PropertyListValue>(json.toString()) : std::nullopt;
    case Kind::Date: {
      const auto date = Date::fromISO8601(json.toString());
      return date && date->toDateTime().isValid() ? std::optional<PropertyListValue>(*date) : std::nullopt;
    }
    case Kind::Number:
      return json.isDouble() ? std::optional<PropertyListValue>(json.toDouble()) : std::nullopt;
    case Kind::Texts:
      return json.isArray() ? textsOf(json.toArray()) : std::nullopt;
    case Kind::Location:
      return plainDictionary(locationKeys, json);
    case Kind::Weather:
      return plainDictionary(weatherKeys, json);
  }
  return std::nullopt;
}

std::optional<PropertyListDictionary> plainFields(const QJsonObject& object, QString* problem) {
  const auto uuid = QLJournalEntryFile::canonicalUUID(object[EntryFields::uuid].toString());
  if (!uuid) {
    *problem = u"it has no uuid"_s;
    return std::nullopt;
  }
  PropertyListDictionary fields{{EntryFields::uuid, *uuid}};
  for (const Key& key : entryKeys) {
    const QJsonValue json = object[key.name];
    if (json.isUndefined()) continue;
    auto value = plainValue(key.kind, json);
    if (!value) {
      *problem = QString::fromLatin1(key.problem);
      return std::nullopt;
    }
    fields.insert(key.name, *std::move(value));
  }
  return fields;
}

}  // namespace

QJsonObject fromFields(const QString& uuid, const PropertyListDictionary& fields) {
  QJsonObject object = plainObject(entryKeys, fields);
  object[EntryFields::uuid] = uuid;
  QString problem;
  const auto comesBack = plainFields(object, &problem).value_or(PropertyListDictionary());
  QJsonObject others;
  for (auto it = fields.begin(); it != fields.end(); ++it) {
    const QJsonValue exact = typedJson(*it);
    if (!comesBack.contains(it.key()) || typedJson(comesBack.value(it.key())) != exact) others[it.key()] = exact;
  }
  if (!fields.contains(EntryFields::uuid)) others[EntryFields::uuid] = QJsonValue::Null;
  if (!others.isEmpty()) object[otherFields] = others;
  return object;
}

std::optional<PropertyListDictionary> toFields(const QJsonObject& object, QString* problem) {
  auto fields = plainFields(object, problem);
  const QJsonValue json = object[otherFields];
  if (!fields || json.isUndefined()) return fields;
  const auto failed = [problem](const QString& text) -> std::optional<PropertyListDictionary> {
    *problem = text;
    return std::nullopt;
  };
  if (!json.isObject()) return failed(u"its otherFields are no object"_s);
  const QJsonObject others = json.toObject();
  for (auto it = others.begin(); it != others.end(); ++it) {
    if (it.value().isNull()) {
      fields->remove(it.key());
      continue;
    }
    auto value = valueOfTypedJson(it.value());
    if (!value)
      return failed(u"\"%1\" of its otherFields is of a kind that this version does not know"_s.arg(it.key()));
    fields->insert(it.key(), *std::move(value));
  }
  // Nobody could read the entry.
  if (fields->contains(EntryFields::text) && !fields->value(EntryFields::text).isString())
    return failed(u"its text is no string"_s);
  return fields;
}

}  // namespace quillo::EntryJson
