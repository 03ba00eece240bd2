#include "config/Settings.h"

#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "config/QuilloConfig.h"

#include <algorithm>
#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr auto shared = SettingStore::SharedList;
constexpr auto own = SettingStore::OwnDefaults;
constexpr auto mainApplication = SettingStore::MainApplication;
constexpr std::monostate none;

using enum SettingType;

constexpr std::array table{
    // clang-format off
    Setting{Key::journalPackageURL, shared, Path, none, "no journal is configured"_L1, Notice::journalPackagePathDidChange},
    Setting{Key::journalFileSharedBookmarkData, shared, Data, none},
    Setting{Key::journalFileBookmarkData, own, Data, none},
    Setting{Key::remindersEnabled, shared, Bool, true, {}, Notice::remindersManagerValuesDidChange},
    Setting{Key::remindersFrequency, shared, Integer, qint64{0}, "the calendar unit: 16 is a day, 32 an hour"_L1, Notice::reminderSettingsDidChange},
    Setting{Key::remindersInterval, shared, Integer, qint64{0}, "how many units; 0 gives no reminder"_L1, Notice::reminderSettingsDidChange},
    Setting{Key::remindersBaseDate, shared, Date, none, {}, Notice::reminderSettingsDidChange},
    Setting{Key::remindersBaseDateTimezone, shared, String, none, {}, Notice::reminderSettingsDidChange},
    Setting{Key::remindersValidPeriod, shared, Real, 0.0, "seconds of the day's window; 0 is the whole day"_L1, Notice::reminderSettingsDidChange},
    Setting{Key::remindersPlaySound, shared, Bool, false, {}, Notice::reminderSettingsDidChange},
    Setting{Key::remindersOpenMenuBar, shared, Bool, false, {}, Notice::reminderSettingsDidChange},
    Setting{Key::remindersSendToNotificationCenter, shared, Bool, false, {}, Notice::reminderSettingsDidChange},
    Setting{Key::agentEnabled, shared, Bool, false, {}, Notice::agentManagerValuesDidChange},
    Setting{Key::startAgentAtLogin, shared, Bool, none, "an older version's, moved into AgentEnabled"_L1, Notice::agentManagerValuesDidChange},
    Setting{Key::menuEntryGlobalShortcut, shared, Dictionary, none, {}, Notice::menuBarEntryShortcutDidChange},
    Setting{Key::keepEntryWindowOnScreen, shared, Bool, false, "off, the window is centred at the icon even where a part of it is off the screen"_L1, Notice::settingsDidChange},
    Setting{Key::escapeClosesEntryWindow, shared, Bool, false, {}, Notice::settingsDidChange},
    Setting{Key::addLocationAutomatically, shared, Bool, true, {}, Notice::settingsDidChange},
    Setting{Key::useFahrenheitTempScale, shared, Bool, false, {}, Notice::tempScaleDidChange},
    Setting{Key::shouldAddHashtags, shared, Integer, qint64{0}, "2 keeps hashtags out of the tags, any other number does not"_L1, Notice::settingsDidChange},
    Setting{Key::sendUsageData, shared, Bool, true, "nothing is sent anywhere, whatever it is set to"_L1},
    Setting{Key::serverURL, shared, URL, productionWebBaseURL},
    Setting{Key::nativeSyncJournalID, shared, Object, none},
    Setting{Key::nativeSyncSessionIdentifier, shared, Object, none},
    Setting{Key::verboseLogging, shared, Bool, false, {}, Notice::settingsDidChange},
    Setting{Key::autoBackupLocation, own, URL, none, "an older version's"_L1},
    Setting{Key::autoBackupLocationBookmark, own, Data, none, "the default backup folder"_L1},
    Setting{Key::editorSpellCheckEnabled, own, Bool, true, {}, Notice::settingsDidChange},
    Setting{Key::editorGrammarCheckEnabled, own, Bool, false, {}, Notice::settingsDidChange},
    Setting{Key::editorCorrectSpellingEnabled, own, Bool, true, {}, Notice::settingsDidChange},
    Setting{Key::markdownEnabled, own, Bool, false, {}, Notice::markdownDidChange},
    Setting{Key::webKitDeveloperExtras, own, String, none, "\"1\" while the web inspector is allowed"_L1},
    Setting{Key::dropboxAppFolderBookmarkData, own, Data, none},
    Setting{Key::locationNMEASource, own, String, none, "the desktop's location service"_L1, Notice::settingsDidChange},
    Setting{Key::weatherServiceURL, own, URL, none, "the public weather service"_L1, Notice::settingsDidChange},
    Setting{Key::grammarServerURL, own, URL, "http://localhost:8081"_L1, "on this machine; another is not asked"_L1, Notice::settingsDidChange},
    Setting{Key::allowWebInspector, SettingStore::Environment, Bool, false},
    // The main application's own; only that application knows their defaults.
    Setting{"InspirationalMessagesEnabled"_L1, mainApplication, Bool, none},
    Setting{"AskedToStartAgentAtLogin"_L1, mainApplication, Bool, none},
    Setting{"AskedToMoveToDropboxAppFolder"_L1, mainApplication, Bool, none},
    Setting{"PopoverPreviewsEnabled"_L1, mainApplication, Bool, none},
    Setting{"AutoBoldFirstLineTitles"_L1, mainApplication, Bool, none, {}, Notice::autoBoldDidChange},
    Setting{"SecurityPasswordProtectionEnabled"_L1, mainApplication, Bool, none},
    Setting{"SecuritySleepLockEnabled"_L1, mainApplication, Bool, none},
    Setting{"SecurityIdleLockEnabled"_L1, mainApplication, Bool, none},
    Setting{"SecurityIdleLockTime"_L1, mainApplication, Object, none},
    Setting{"DefaultEntryFileFormat"_L1, mainApplication, Object, none},
    Setting{Key::fontSize, mainApplication, Object, none, {}, Notice::fontSizeDidChange},
    Setting{Key::look, mainApplication, String, none, "as the desktop; light or dark"_L1, Notice::settingsDidChange},
    Setting{"TextStyle"_L1, mainApplication, Object, none, {}, Notice::textStyleDidChange},
    Setting{"EmbedMediaEnabled"_L1, mainApplication, Bool, none, {}, Notice::embedMediaDidChange},
    Setting{"LinkTwitterHandles"_L1, mainApplication, Bool, none, {}, Notice::linkTwitterHandlesDidChange},
    Setting{Key::autoBackupEnabled, mainApplication, Bool, false, {}, Notice::settingsDidChange},
    Setting{Key::autoBackupFrequency, mainApplication, Integer, qint64{16}, "the calendar unit: 8 is a month, 16 a day, 32 an hour, 256 a week"_L1, Notice::settingsDidChange},
    Setting{Key::autoBackupInterval, mainApplication, Integer, qint64{1}, "how many units"_L1, Notice::settingsDidChange},
    Setting{Key::autoBackupMaxCount, mainApplication, Integer, qint64{40}, "how many backups stay at most; 0 keeps all"_L1, Notice::settingsDidChange},
    Setting{"ListViewSortOrder"_L1, mainApplication, Object, none},
    Setting{"CalendarViewSortOrder"_L1, mainApplication, Object, none},
    Setting{"HasPromptedForUsageTracking"_L1, mainApplication, Bool, none},
    // clang-format on
};

struct AsValue {
  std::optional<PropertyListValue> operator()(std::monostate) const { return std::nullopt; }
  template <typename T>
  std::optional<PropertyListValue> operator()(T value) const {
    return PropertyListValue(value);
  }
};

}  // namespace

std::optional<PropertyListValue> Setting::defaultValue() const {
  return std::visit(AsValue(), whenAbsent);
}

std::span<const Setting> settingsTable() {
  return table;
}

const Setting* settingForKey(const QString& key) {
  const auto found = std::ranges::find(table, key, &Setting::key);
  return found == table.end() ? nullptr : &*found;
}

QStringList Setting::noticesAfterChange() const {
  if (notice.isEmpty()) return {};
  QStringList notices{notice};
  // The agent hears none of the main application's notices, and may use the setting all the same.
  constexpr std::array unheard{Notice::tempScaleDidChange, Notice::markdownDidChange};
  if (std::ranges::find(unheard, notice) != unheard.end()) notices << Notice::settingsDidChange;
  return notices;
}

PropertyListDictionary settingDefaults(std::initializer_list<QLatin1StringView> keys) {
  PropertyListDictionary defaults;
  for (const QLatin1StringView key : keys) {
    const Setting* setting = settingForKey(key);
    if (const auto value = setting ? setting->defaultValue() : std::nullopt) defaults.insert(key, *value);
  }
  return defaults;
}

std::optional<PropertyListValue> settingValue(const PersistentPropertyList* list, const QString& key) {
  if (auto stored = list ? list->valueForKey(key) : std::nullopt; stored && !stored->isNull()) return stored;
  const Setting* setting = settingForKey(key);
  return setting ? setting->defaultValue() : std::nullopt;
}

}  // namespace quillo
