#include "config/Keys.h"
#include "config/SettingText.h"
#include "config/Settings.h"
#include "foundation/PropertyListJson.h"
#include "quilloctl/Command.h"
#include "quilloctl/NearestWords.h"
#include "quilloctl/Pager.h"

#include <QJsonObject>
#include <QMap>

#include <algorithm>
#include <array>
#include <map>
#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

const std::map<std::string, SettingType> typeNames{{"bool", SettingType::Bool},  {"int", SettingType::Integer},
                                                   {"real", SettingType::Real},  {"string", SettingType::String},
                                                   {"date", SettingType::Date},  {"data", SettingType::Data},
                                                   {"json", SettingType::Object}};

// The shared settings whose names are most like the word, the likest first; none where none is.
QStringList nearestSettings(const QString& key) {
  constexpr qsizetype offered = 3;
  QStringList names;
  for (const Setting& setting : settingsTable())
    if (isShared(setting)) names << setting.key;
  return nearestWords(key, names).mid(0, offered);
}

// A name that nobody reads is a slip, most of the time.
int unknownName(const QString& key, const QString& remedy) {
  const QStringList nearest = nearestSettings(key);
  const QString near = nearest.isEmpty()     ? u"quilloctl settings list --all has them all"_s
                       : nearest.size() == 1 ? u"the nearest is "_s + nearest.first()
                                             : u"the nearest are "_s + nearest.join(u", "_s);
  return failed(u"there is no setting \"%1\"; %2%3"_s.arg(key, near, remedy));
}

// Without --type: the kind that the key has, and text for a key that only its writer knows.
SettingType typeFor(const Setting* setting, const std::string& wanted) {
  const SettingType own = setting ? typeOfText(*setting) : SettingType::String;
  if (wanted.empty()) return own;
  const SettingType type = typeNames.at(wanted);
  // Paths and URLs are kept as text, which does not make any text one.
  return type == SettingType::String && (own == SettingType::Path || own == SettingType::URL) ? own : type;
}

bool isOfBackups(const QString& key) {
  constexpr std::array keys{Key::autoBackupEnabled, Key::autoBackupFrequency, Key::autoBackupInterval};
  return std::ranges::find(keys, key) != keys.end();
}

// Saves and tells the other processes.
int save(Context& context, PersistentPropertyList& list, const QString& key,
         const std::optional<PropertyListValue>& value) {
  list.setValueForKey(value, key);
  if (!isSaved(list, key)) return Failed;
  const Setting* setting = settingForKey(key);
  if (setting)
    for (const QString& notice : setting->noticesAfterChange()) context.post(notice);
  if (isOfBackups(key) && !applyBackupSchedule(context)) return Failed;
  if (context.json)
    printJson(QJsonObject{{u"key"_s, key}, {u"value"_s, value ? jsonFromPropertyList(*value) : QJsonValue()}});
  else if (value && key == Key::sendUsageData)
    print(key + u" is kept; "_s + setting->note);
  return Done;
}

int list(Context& context, bool all) {
  const PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  PropertyListDictionary values = list->properties();
  Pager::begin();
  if (context.json) {
    QJsonObject object = jsonFromPropertyList(values).toObject();
    for (const Setting& setting : settingsTable()) {
      if (!all || !isShared(setting) || values.contains(setting.key)) continue;
      const auto value = setting.defaultValue();
      object[setting.key] = value ? jsonFromPropertyList(*value) : QJsonValue();
    }
    printJson(object);
    return Done;
  }
  QMap<QString, QString> lines;
  for (auto it = values.begin(); it != values.end(); ++it) lines[it.key()] = it.key() + u" = "_s + bareText(*it);
  for (const Setting& setting : settingsTable())
    if (all && isShared(setting) && !values.contains(setting.key)) lines[setting.key] = absentText(setting);
  for (const QString& line : lines) print(withoutControls(line));
  return Done;
}

int get(Context& context, const QString& key) {
  const PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const Setting* setting = settingForKey(key);
  auto value = list->valueForKey(key);
  if (!value && !setting) return unknownName(key, {});
  if (!value && !isShared(*setting)) return failed(u"%1 is not a shared setting"_s.arg(key));
  if (!value) value = setting->defaultValue();
  if (!value) return failed(u"%1 is not set"_s.arg(key));
  if (context.json)
    printJson(jsonFromPropertyList(*value));
  else
    print(bareText(*value));
  return Done;
}

int set(Context& context, const QString& key, const QString& text, const std::string& wantedType, bool force) {
  const Setting* setting = settingForKey(key);
  if (key.isEmpty()) return failed(u"a key cannot be empty"_s);
  if (!setting && !force) return unknownName(key, u"; --force stores it all the same"_s);
  if (setting && !isShared(*setting)) return failed(u"%1 is not a shared setting"_s.arg(key));
  const SettingType type = typeFor(setting, wantedType);
  const auto value = settingFromText(text, type);
  if (!value || value->isNull())
    return failed(u"\"%1\" is no value for %2: %3 is expected"_s.arg(text, key, expectedText(type)));
  PersistentPropertyList* list = sharedList(context);
  return list ? save(context, *list, key, value) : Failed;
}

int remove(Context& context, const QString& key) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const Setting* setting = settingForKey(key);
  if (!list->valueForKey(key) && !setting) return unknownName(key, {});
  if (setting && !isShared(*setting)) return failed(u"%1 is not a shared setting"_s.arg(key));
  return save(context, *list, key, std::nullopt);
}

}  // namespace

void addSettingsCommand(CLI::App& program, Action& action) {
  struct Words {
    std::string key, value, type;
    bool all{false}, force{false};
  };
  const auto words = std::make_shared<Words>();
  const auto key = [words] { return QString::fromStdString(words->key); };
  CLI::App* settings = program.add_subcommand("settings", "Read and change the settings that both applications share");
  settings->require_subcommand(1);

  CLI::App* lister = settings->add_subcommand("list", "Print every setting that is set");
  lister->add_flag("--all", words->all, "Those that are not set, too, with what they then read as");
  lister->callback([&action, words] { action = [words](Context& context) { return list(context, words->all); }; });

  CLI::App* getter = settings->add_subcommand("get", "Print a setting's bare value, its default where it is not set");
  getter->add_option("KEY", words->key, "Its name; settings list --all has them all")->required();
  getter->callback([&action, key] { action = [key](Context& context) { return get(context, key()); }; });

  CLI::App* setter = settings->add_subcommand("set", "Save a setting and tell the other processes");
  setter->add_option("KEY", words->key, "Its name; settings list --all has them all")->required();
  setter->add_option("VALUE", words->value, "Its value, written as get prints it")->required();
  setter->add_option("--type", words->type, "bool, int, real, string, date, data or json; else the key's own kind")
      ->check(CLI::IsMember(typeNames));
  setter->add_flag("--force", words->force, "Store it also under a name that no program of ours reads");
  setter->callback([&action, key, words] {
    action = [key, words](Context& context) {
      return set(context, key(), QString::fromStdString(words->value), words->type, words->force);
    };
  });

  CLI::App* remover = settings->add_subcommand("remove", "Remove a setting and tell the other processes");
  remover->add_option("KEY", words->key, "Its name")->required();
  remover->callback([&action, key] { action = [key](Context& context) { return remove(context, key()); }; });
}

}  // namespace quillo::ctl
