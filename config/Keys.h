#pragma once

#include <QLatin1StringView>
#include <QtGlobal>

// The name of every setting and change notification that the agent and the main application share, once. The two
// applications keep this vocabulary together: a name here is spelled exactly as it is stored or broadcast. What the
// settings are is in Settings.h.
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
// Of settings without one of their own: whoever hears it reads the shared list and its own settings again.
inline constexpr QLatin1StringView settingsDidChange{"com.quilloapp.QuilloSettingsDidChangeNotification"};
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
inline constexpr QLatin1StringView keepEntryWindowOnScreen{"KeepEntryWindowOnScreen"};
inline constexpr QLatin1StringView escapeClosesEntryWindow{"EscapeClosesEntryWindow"};
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
inline constexpr QLatin1StringView fontSize{"FontSize"};
// Of the main application's windows: "light" or "dark", and as the desktop has it without.
inline constexpr QLatin1StringView look{"Look"};
// Services.
inline constexpr QLatin1StringView sendUsageData{"SendUsageData"};
inline constexpr QLatin1StringView serverURL{"QLServerURL"};
inline constexpr QLatin1StringView nativeSyncJournalID{"QLNativeSyncJournalID"};
inline constexpr QLatin1StringView nativeSyncSessionIdentifier{"QLNativeSyncSessionIdentifier"};
inline constexpr QLatin1StringView verboseLogging{"QLVerboseLogging"};
inline constexpr QLatin1StringView autoBackupLocation{"AutoBackupLocation"};
inline constexpr QLatin1StringView autoBackupLocationBookmark{"AutoBackupLocationBookmark"};
inline constexpr QLatin1StringView autoBackupEnabled{"AutoBackupEnabled"};
inline constexpr QLatin1StringView autoBackupFrequency{"AutoBackupFrequency"};
inline constexpr QLatin1StringView autoBackupInterval{"AutoBackupInterval"};
inline constexpr QLatin1StringView autoBackupMaxCount{"AutoBackupMaxCount"};
inline constexpr QLatin1StringView webKitDeveloperExtras{"WebKitDeveloperExtras"};
inline constexpr QLatin1StringView allowWebInspector{"QLAllowWebInspector"};
inline constexpr QLatin1StringView dropboxAppFolderBookmarkData{"DropboxAppFolderBookmarkData"};
// Where place and weather come from; for machines with a receiver of their own, and for trying things out.
inline constexpr QLatin1StringView locationNMEASource{"LocationNMEASource"};
inline constexpr QLatin1StringView weatherServiceURL{"WeatherServiceURL"};
// Where grammar is checked: a server on this machine.
inline constexpr QLatin1StringView grammarServerURL{"GrammarServerURL"};
}  // namespace Key

}  // namespace quillo
