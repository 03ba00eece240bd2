#include "config/Keys.h"
#include "foundation/PropertyListJson.h"
#include "quilloctl/Command.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <map>
#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

const std::map<std::string, SettingType> typeNames{{"bool", SettingType::Bool},  {"int", SettingType::Integer},
                                                   {"real", SettingType::Real},  {"string", SettingType::String},
                                                   {"date", SettingType::Date},  {"data", SettingType::Data},
                                                   {"json", SettingType::Object}};

const Setting* knownSetting(const QString& key) {
  const QByteArray name = key.toUtf8();
  return settingForKey(QLatin1StringView(name));
}

// The bare value on one line.
QString bare(const PropertyListValue& value) {
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

std::optional<PropertyListValue> parse(const QString& text, SettingType type) {
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
    case SettingType::Path:
    case SettingType::URL:
      return text;
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

// Without --type: the kind that the key has, and text for a key that only its writer knows.
SettingType typeFor(const Setting* setting, const std::string& wanted) {
  if (!wanted.empty()) return typeNames.at(wanted);
  if (!setting || setting->type == SettingType::Object) return SettingType::String;
  return setting->type;
}

QString expected(SettingType type) {
  switch (type) {
    case SettingType::Bool:
      return u"true or false"_s;
    case SettingType::Integer:
      return u"a whole number"_s;
    case SettingType::Real:
      return u"a number"_s;
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

// Saves and tells the other processes.
int change(Context& context, const QString& key, const std::optional<PropertyListValue>& value) {
  const Setting* setting = knownSetting(key);
  if (key.isEmpty()) return failed(u"a key cannot be empty"_s);
  if (setting && setting->store != SettingStore::SharedList && setting->store != SettingStore::MainApplication)
    return failed(u"%1 is not a shared setting"_s.arg(key));
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  list->setValueForKey(value, key);
  if (!isSaved(*list, key)) return Failed;
  if (setting && !setting->notice.isEmpty()) context.post(setting->notice);
  if (context.json)
    printJson(QJsonObject{{u"key"_s, key}, {u"value"_s, value ? jsonFromPropertyList(*value) : QJsonValue()}});
  return Done;
}

int listAll(Context& context) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  if (context.json) {
    printJson(jsonFromPropertyList(list->properties()));
    return Done;
  }
  for (auto it = list->properties().begin(); it != list->properties().end(); ++it)
    print(it.key() + u" = "_s + bare(*it));
  return Done;
}

int get(Context& context, const QString& key) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const auto value = list->valueForKey(key);
  if (!value) return failed(u"%1 is not set"_s.arg(key));
  if (context.json)
    printJson(jsonFromPropertyList(*value));
  else
    print(bare(*value));
  return Done;
}

int set(Context& context, const QString& key, const QString& text, const std::string& wantedType) {
  const SettingType type = typeFor(knownSetting(key), wantedType);
  const auto value = parse(text, type);
  if (!value || value->isNull())
    return failed(u"\"%1\" is no value for %2: %3 is expected"_s.arg(text, key, expected(type)));
  return change(context, key, value);
}

}  // namespace

void addSettingsCommand(CLI::App& program, Action& action) {
  struct Words {
    std::string key, value, type;
  };
  const auto words = std::make_shared<Words>();
  const auto key = [words] { return QString::fromStdString(words->key); };
  CLI::App* settings = program.add_subcommand("settings", "Read and change the settings that both applications share");
  settings->require_subcommand(1);

  settings->add_subcommand("list", "Print every setting")->callback([&action] { action = listAll; });

  CLI::App* getter = settings->add_subcommand("get", "Print a setting's bare value; an absent one is exit 1");
  getter->add_option("KEY", words->key)->required();
  getter->callback([&action, key] { action = [key](Context& context) { return get(context, key()); }; });

  CLI::App* setter = settings->add_subcommand("set", "Save a setting and tell the other processes");
  setter->add_option("KEY", words->key)->required();
  setter->add_option("VALUE", words->value)->required();
  setter->add_option("--type", words->type, "bool, int, real, string, date, data or json; else the key's own kind")
      ->check(CLI::IsMember(typeNames));
  setter->callback([&action, key, words] {
    action = [key, words](Context& context) {
      return set(context, key(), QString::fromStdString(words->value), words->type);
    };
  });

  CLI::App* remover = settings->add_subcommand("remove", "Remove a setting and tell the other processes");
  remover->add_option("KEY", words->key)->required();
  remover->callback(
      [&action, key] { action = [key](Context& context) { return change(context, key(), std::nullopt); }; });
}

}  // namespace quillo::ctl
