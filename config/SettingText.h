#pragma once

#include "config/Settings.h"

#include <QString>

#include <optional>

namespace quillo {

// Whether the setting is in the list that both applications write.
[[nodiscard]] inline bool isShared(const Setting& setting) {
  return setting.store == SettingStore::SharedList || setting.store == SettingStore::MainApplication;
}

// The bare value on one line: dates as ISO 8601 in UTC, data as base64, collections as JSON.
[[nodiscard]] QString bareText(const PropertyListValue& value);

// The line of a setting that is not set: its default, where it has one, and what is to be said of it.
[[nodiscard]] QString absentText(const Setting& setting);

// The kind of value that a text for the setting is read as: text for one that only its writer knows.
[[nodiscard]] inline SettingType typeOfText(const Setting& setting) {
  return setting.type == SettingType::Object ? SettingType::String : setting.type;
}

// The value of that kind that the text means, or nothing; what would have been one is told by expectedText.
[[nodiscard]] std::optional<PropertyListValue> settingFromText(const QString& text, SettingType type);
[[nodiscard]] QString expectedText(SettingType type);

}  // namespace quillo
