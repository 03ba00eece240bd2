#pragma once

#include <QLatin1StringView>
#include <QtGlobal>

#include <array>

// Every setting and every change notification that the agent and the main application share, once. The two applications
// keep this vocabulary together: a name here is spelled exactly as it is stored or broadcast.
namespace quillo {

namespace Identifier {
inline constexpr QLatin1StringView mainApplication{"com.quilloapp.quillo"};
inline constexpr QLatin1StringView agent{"com.quilloapp.quillo-agent"};
inline constexpr QLatin1StringView journalDocumentType{"com.quilloapp.journal"};
inline constexpr QLatin1StringView applicationGroup{"Q7R2KX9M4P.quilloapp"};
}  // namespace Identifier

namespace Notice {
// Distributed: every process of the user hears them. No object, no payload; a receiver reads the stores again.
inline constexpr QLatin1StringView journalPackagePathDidChange{
    "com.quilloapp.QuilloJournalPackagePathDidChangeNotification"};
inline constexpr QLatin1StringView menuBarEntryShortcutDidChange{
    "com.quilloapp.QuilloMenuBarEntryShortcutDidChangeNotification"};
inline constexpr QLatin1StringView reminderSettingsDidChange{
    "com.quilloapp.QuilloReminderSettingsDidChangeNotification"};
inline constexpr QLatin1StringView remindersManagerValuesDidChange{
    "com.quilloapp.QuilloRemindersManagerValuesDidChangeNotification"};
inline constexpr QLatin1StringView agentManagerValuesDidChange{
    "com.quilloapp.QuilloAgentManagerValuesDidChangeNotification"};
// Nobody posts or observes this one; the reminders manager removes itself under it when it is destroyed.
inline constexpr QLatin1StringView agentReminderSettingsDidChange{
    "com.quilloapp.QuilloAgentReminderSettingsDidChangeNotification"};
// The main application's own; the agent neither posts nor observes them.
inline constexpr QLatin1StringView fontSizeDidChange{"com.quilloapp.QuilloFontSizeDidChangeNotification"};
inline constexpr QLatin1StringView markdownDidChange{"com.quilloapp.QuilloMarkdownDidChangeNotification"};
inline constexpr QLatin1StringView embedMediaDidChange{"com.quilloapp.QuilloEmbedMediaDidChangeNotification"};
inline constexpr QLatin1StringView linkTwitterHandlesDidChange{
    "com.quilloapp.QuilloLinkTwitterHandlesDidChangeNotification"};
inline constexpr QLatin1StringView autoBoldDidChange{"com.quilloapp.QuilloAutoBoldDidChangeNotification"};
inline constexpr QLatin1StringView textStyleDidChange{"com.quilloapp.QuilloTextStyleDidChangeNotification"};
inline constexpr QLatin1StringView tempScaleDidChange{"QuilloTempScaleDidChangeNotification"};
// Local: inside the process.
inline constexpr QLatin1StringView spellingAndGrammarSettingsDidChange{
    "SpellingAndGrammarSettingsDidChangeNotification"};
inline constexpr QLatin1StringView systemClockDidChange{"NSSystemClockDidChangeNotification"};
inline constexpr QLatin1StringView systemTimeZoneDidChange{"NSSystemTimeZoneDidChangeNotification"};
inline constexpr QLatin1StringView windowWillClose{"NSWindowWillCloseNotification"};
inline constexpr QLatin1StringView windowDidMove{"NSWindowDidMoveNotification"};
// Of the workspace's centre.
inline constexpr QLatin1StringView workspaceDidWake{"NSWorkspaceDidWakeNotification"};
}  // namespace Notice

namespace Key {
// The journal's location.
inline constexpr QLatin1StringView journalPackageURL{"JournalPackageURL"};
inline constexpr QLatin1StringView journalFileSharedBookmarkData{"JournalFileSharedBookmarkData"};
inline constexpr QLatin1StringView journalFileBookmarkData{"JournalFileBookmarkData"};
// Reminders.
inline constexpr QLatin1StringView remindersEnabled{"RemindersEnabled"};
inline constexpr QLatin1StringView remindersFrequency{"RemindersFrequency"};
inline constexpr QLatin1StringView remindersInterval{"RemindersInterval"};
inline constexpr QLatin1StringView remindersBaseDate{"RemindersBaseDate"};
inline constexpr QLatin1StringView remindersBaseDateTimezone{"RemindersBaseDateTimezone"};
inline constexpr QLatin1StringView remindersValidPeriod{"RemindersValidPeriod"};
inline constexpr QLatin1StringView remindersPlaySound{"RemindersPlaySound"};
inline constexpr QLatin1StringView remindersOpenMenuBar{"RemindersOpenMenuBar"};
inline constexpr QLatin1StringView remindersSendToNotificationCenter{"RemindersSendToNotificationCenter"};
// The agent.
inline constexpr QLatin1StringView agentEnabled{"AgentEnabled"};
inline constexpr QLatin1StringView startAgentAtLogin{"StartAgentAtLogin"};
inline constexpr QLatin1StringView menuEntryGlobalShortcut{"MenuEntryGlobalShortcut"};
// Entries.
inline constexpr QLatin1StringView addLocationAutomatically{"AddLocationAutomatically"};
inline constexpr QLatin1StringView useFahrenheitTempScale{"UseFahrenheitTempScale"};
inline constexpr QLatin1StringView shouldAddHashtags{"ShouldAddHashtags"};
// The one value of it that keeps the hashtags of a text out of the entry's tags.
inline constexpr qint64 hashtagsAreNotTags = 2;
inline constexpr QLatin1StringView editorSpellCheckEnabled{"EditorSpellCheckEnabled"};
inline constexpr QLatin1StringView editorGrammarCheckEnabled{"EditorGrammarCheckEnabled"};
inline constexpr QLatin1StringView editorCorrectSpellingEnabled{"EditorCorrectSpellingEnabled"};
inline constexpr QLatin1StringView markdownEnabled{"MarkdownEnabled"};
// Services.
inline constexpr QLatin1StringView sendUsageData{"SendUsageData"};
inline constexpr QLatin1StringView serverURL{"QLServerURL"};
inline constexpr QLatin1StringView nativeSyncJournalID{"QLNativeSyncJournalID"};
inline constexpr QLatin1StringView nativeSyncSessionIdentifier{"QLNativeSyncSessionIdentifier"};
inline constexpr QLatin1StringView verboseLogging{"QLVerboseLogging"};
inline constexpr QLatin1StringView autoBackupLocation{"AutoBackupLocation"};
inline constexpr QLatin1StringView autoBackupLocationBookmark{"AutoBackupLocationBookmark"};
inline constexpr QLatin1StringView webKitDeveloperExtras{"WebKitDeveloperExtras"};
inline constexpr QLatin1StringView allowWebInspector{"QLAllowWebInspector"};
inline constexpr QLatin1StringView dropboxAppFolderBookmarkData{"DropboxAppFolderBookmarkData"};
// Where place and weather come from; for machines with a receiver of their own, and for trying things out.
inline constexpr QLatin1StringView locationNMEASource{"LocationNMEASource"};
inline constexpr QLatin1StringView weatherServiceURL{"WeatherServiceURL"};
}  // namespace Key

// Where a setting is kept.
enum class SettingStore {
  SharedList,       // quillo.plist of the application group, read and written by both applications
  OwnDefaults,      // the process's own user defaults
  Environment,      // a variable of the process environment
  MainApplication,  // kept for the main application's sake; the agent neither reads nor writes it
};

enum class SettingType { Bool, Integer, Real, String, Path, URL, Date, Data, Dictionary, Object };

struct Setting {
  QLatin1StringView key;
  SettingStore store;
  SettingType type;
  // What an absent key means.
  QLatin1StringView whenAbsent;
  // The distributed notification that a writer posts after a change; empty where there is none.
  QLatin1StringView notice{};
};

// The one table. quilloctl takes the types and the notifications from it.
inline constexpr std::array settingsTable{
    // clang-format off
    Setting{Key::journalPackageURL, SettingStore::SharedList, SettingType::Path, QLatin1StringView("no journal configured"), Notice::journalPackagePathDidChange},
    Setting{Key::journalFileSharedBookmarkData, SettingStore::SharedList, SettingType::Data, QLatin1StringView("no shared bookmark")},
    Setting{Key::journalFileBookmarkData, SettingStore::OwnDefaults, SettingType::Data, QLatin1StringView("no bookmark")},
    Setting{Key::remindersEnabled, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("YES is written at the first start"), Notice::remindersManagerValuesDidChange},
    Setting{Key::remindersFrequency, SettingStore::SharedList, SettingType::Integer, QLatin1StringView("0, no unit"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersInterval, SettingStore::SharedList, SettingType::Integer, QLatin1StringView("0"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersBaseDate, SettingStore::SharedList, SettingType::Date, QLatin1StringView("no base date"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersBaseDateTimezone, SettingStore::SharedList, SettingType::String, QLatin1StringView("no base calendar"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersValidPeriod, SettingStore::SharedList, SettingType::Real, QLatin1StringView("0 seconds, the whole day"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersPlaySound, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersOpenMenuBar, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO"), Notice::reminderSettingsDidChange},
    Setting{Key::remindersSendToNotificationCenter, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO"), Notice::reminderSettingsDidChange},
    Setting{Key::agentEnabled, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO is written by the main application"), Notice::agentManagerValuesDidChange},
    Setting{Key::startAgentAtLogin, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("an older version's key, moved into AgentEnabled"), Notice::agentManagerValuesDidChange},
    Setting{Key::menuEntryGlobalShortcut, SettingStore::SharedList, SettingType::Dictionary, QLatin1StringView("no hot key"), Notice::menuBarEntryShortcutDidChange},
    Setting{Key::addLocationAutomatically, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("YES")},
    Setting{Key::useFahrenheitTempScale, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO")},
    Setting{Key::shouldAddHashtags, SettingStore::SharedList, SettingType::Integer, QLatin1StringView("0; only 2 keeps hashtags out of the tags")},
    Setting{Key::sendUsageData, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("YES, as for every value that is not a number")},
    Setting{Key::serverURL, SettingStore::SharedList, SettingType::URL, QLatin1StringView("the production web base URL")},
    Setting{Key::nativeSyncJournalID, SettingStore::SharedList, SettingType::Object, QLatin1StringView("none")},
    Setting{Key::nativeSyncSessionIdentifier, SettingStore::SharedList, SettingType::Object, QLatin1StringView("none")},
    Setting{Key::verboseLogging, SettingStore::SharedList, SettingType::Bool, QLatin1StringView("NO")},
    Setting{Key::autoBackupLocation, SettingStore::OwnDefaults, SettingType::URL, QLatin1StringView("none; an older version's key")},
    Setting{Key::autoBackupLocationBookmark, SettingStore::OwnDefaults, SettingType::Data, QLatin1StringView("the default backup folder")},
    Setting{Key::editorSpellCheckEnabled, SettingStore::OwnDefaults, SettingType::Bool, QLatin1StringView("registered YES")},
    Setting{Key::editorGrammarCheckEnabled, SettingStore::OwnDefaults, SettingType::Bool, QLatin1StringView("registered NO")},
    Setting{Key::editorCorrectSpellingEnabled, SettingStore::OwnDefaults, SettingType::Bool, QLatin1StringView("registered YES")},
    Setting{Key::markdownEnabled, SettingStore::OwnDefaults, SettingType::Bool, QLatin1StringView("NO")},
    Setting{Key::webKitDeveloperExtras, SettingStore::OwnDefaults, SettingType::String, QLatin1StringView("written \"1\" when the web inspector is allowed, else removed")},
    Setting{Key::dropboxAppFolderBookmarkData, SettingStore::OwnDefaults, SettingType::Data, QLatin1StringView("no application folder")},
    Setting{Key::locationNMEASource, SettingStore::OwnDefaults, SettingType::String, QLatin1StringView("the desktop's location service")},
    Setting{Key::weatherServiceURL, SettingStore::OwnDefaults, SettingType::URL, QLatin1StringView("the public weather service")},
    Setting{Key::allowWebInspector, SettingStore::Environment, SettingType::Bool, QLatin1StringView("NO")},
    // The main application's own.
    Setting{QLatin1StringView("InspirationalMessagesEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("AskedToStartAgentAtLogin"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("AskedToMoveToDropboxAppFolder"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("PopoverPreviewsEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("AutoBoldFirstLineTitles"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("SecurityPasswordProtectionEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("SecuritySleepLockEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("SecurityIdleLockEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("SecurityIdleLockTime"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("DefaultEntryFileFormat"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("FontSize"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("TextStyle"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("EmbedMediaEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("LinkTwitterHandles"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("AutoBackupEnabled"), SettingStore::MainApplication, SettingType::Bool, {}},
    Setting{QLatin1StringView("AutoBackupFrequency"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("AutoBackupInterval"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("AutoBackupMaxCount"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("ListViewSortOrder"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("CalendarViewSortOrder"), SettingStore::MainApplication, SettingType::Object, {}},
    Setting{QLatin1StringView("HasPromptedForUsageTracking"), SettingStore::MainApplication, SettingType::Bool, {}},
    // clang-format on
};

// The table's row for `key`, or null.
constexpr const Setting* settingForKey(QLatin1StringView key) {
  for (const Setting& setting : settingsTable)
    if (setting.key == key) return &setting;
  return nullptr;
}

}  // namespace quillo
