#pragma once

#include "foundation/PropertyListValue.h"

#include <QLatin1StringView>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>
#include <span>
#include <variant>

namespace quillo {

class PersistentPropertyList;

// Where a setting is kept.
enum class SettingStore {
  SharedList,       // quillo.plist of the application group, read and written by both applications
  OwnDefaults,      // the process's own user defaults
  Environment,      // a variable of the process environment
  MainApplication,  // in the shared list for the main application's sake; the agent neither reads nor writes it
};

enum class SettingType { Bool, Integer, Real, String, Path, URL, Date, Data, Dictionary, Object };

// What a setting reads as while its key is absent. Nothing: there is no such value, and the note says what that means.
using SettingDefault = std::variant<std::monostate, bool, qint64, double, QLatin1StringView>;

struct Setting {
  QLatin1StringView key;
  SettingStore store;
  SettingType type;
  SettingDefault whenAbsent;
  // For people, where key and default do not say enough.
  QLatin1StringView note{};
  // The distributed notification that a writer posts after a change; empty where there is none.
  QLatin1StringView notice{};

  // The default as the list would hold it.
  [[nodiscard]] std::optional<PropertyListValue> defaultValue() const;
  // What a writer posts, in this order, so that every program hears of the change.
  [[nodiscard]] QStringList noticesAfterChange() const;
};

// Every setting once, the main application's own last.
[[nodiscard]] std::span<const Setting> settingsTable();
// The table's row for `key`, or null.
[[nodiscard]] const Setting* settingForKey(const QString& key);

// The defaults of these settings by their keys, as they are registered; settings without one are left out.
[[nodiscard]] PropertyListDictionary settingDefaults(std::initializer_list<QLatin1StringView> keys);

// What the list holds for the key, else the table's default; a null list holds nothing, and neither does one for a key
// whose removal is still to be written.
[[nodiscard]] std::optional<PropertyListValue> settingValue(const PersistentPropertyList* list, const QString& key);

}  // namespace quillo
