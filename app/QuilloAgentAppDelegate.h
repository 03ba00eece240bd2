#pragma once

#include "about/AboutWindowController.h"
#include "app/GlobalShortcut.h"
#include "app/ReminderDelivery.h"
#include "app/crash/CrashReportManager.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/QLXAStatusBarController.h"
#include "entry/panels/AlertSheet.h"
#include "entry/panels/OpenPanelSheet.h"
#include "entry/text/EntryTextServices.h"
#include "foundation/Bundle.h"
#include "foundation/KeyValueObserving.h"
#include "platform/OutsideClicks.h"
#include "platform/RunningApplications.h"
#include "platform/StatusItem.h"
#include "platform/Workspace.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/WeatherService.h"
#include "reminders/ReminderAlarm.h"

#include <QObject>
#include <QSizeF>

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QMenu;

namespace quillo {

class EntryDraft;
class NotificationCenter;
class QLMixpanelTracker;
class QuilloConfig;
class RemindersManager;

// What the delegate works with of the program itself. All must outlive it.
struct AgentServices {
  QuilloConfig& config;
  // The program's own.
  Bundle bundle;
  NotificationCenter& localCenter;
  NotificationCenter& workspaceCenter;
  NotificationCenter& distributedCenter;
  PTHotKeyCenter& hotKeyCenter;
  CrashReportManager& crashReportManager;
  // For what the entry window holds and no journal has yet.
  EntryDraft& draft;
  EntryTextServices text;
  // Made at the first call, which may be the first to write into the settings.
  std::function<RemindersManager&()> remindersManager;
  // Made at the first call, when it is known whether usage events are wanted.
  std::function<QLMixpanelTracker&()> usageTracker;
};

// The services of the desktop that the delegate passes on or calls. All must outlive it.
struct AgentPlatform {
  RunningApplications& runningApplications;
  Workspace& workspace;
  std::function<std::unique_ptr<StatusItem>()> makeStatusItem;
  std::function<bool()> compositorIsRunning;
  std::function<void(WId)> keepOutOfTaskBar;
  OutsideClicks& outsideClicks;
  std::function<std::unique_ptr<LocationService>()> makeLocationManager;
  WeatherService& weather;
  const Clock& clock;
  OneShotTimerFactory& timers;
  // Ends the program from its event loop.
  std::function<void()> terminate;
  TagSource tags{};
  // Reminders do without either.
  UserNotifications* userNotifications{nullptr};
  Sounds* sounds{nullptr};
};

// Owns every object that lives as long as the process, creates and wires them in a fixed order, and carries out the
// commands of the status menu. Main thread only.
class QuilloAgentAppDelegate final : public QObject, public BITCrashReportManagerDelegate, public KeyValueObserver {
  Q_OBJECT

 public:
  // The tags of the menu's items. 2 stays free: no item has it, and a click with it does nothing.
  enum MenuTag {
    ShowApplication = 1,
    ReminderLine = 3,
    ToggleReminders = 4,
    Preferences = 5,
    About = 6,
    Quit = 7,
  };

  // Sets logging up; once, before the first object of this class is made.
  static void initialize(QuilloConfig& config);

  QuilloAgentAppDelegate(AgentServices services, AgentPlatform platform);
  ~QuilloAgentAppDelegate() override;

  // Makes sure that the journal is reachable: renews the own bookmark from the shared one where the configured location
  // is not readable and writable. Only logs what fails.
  void resolveJournalFileAccess();

  // Checks the journal's access and ends every other running copy of the agent: the newest one stays.
  void applicationWillFinishLaunching();
  // Starts crash reporting, which then calls showMainApplicationWindow().
  void applicationDidFinishLaunching();
  // Starts the user interface the first time it is called; later calls do nothing.
  void showMainApplicationWindow() override;
  // Before the process or the session ends: saves the entry window's text, and asks nobody.
  void applicationWillTerminate();

  // Gives the reminder by window, notification and sound, as the settings want it.
  void reminderAlarmFired();
  // The same out of its time, to see what it is like.
  void tryReminder();
  // See AgentEntryWindowController.
  void settingsDidChange();
  // Reminders were switched on or off, here or by the other application. Other contexts than the delegate's own are
  // ignored.
  void observeValueForKeyPath(const QString& keyPath, KeyValueObservable& object, const void* context) override;

  // What the hot key does: shows the entry window, or hides it. The hot key itself does not matter, and may be null.
  void hitHotKey(PTHotKey* hotKey);
  // Registers the hot key that the settings have now, in place of the one before.
  void resetGlobalShortcut();

  bool launchMainApp();
  // Always the same window.
  void orderFrontAboutWindow();
  void contextualMenuItemClicked(int tag);
  // Retitles the item as needed; answers whether it is enabled.
  bool validateMenuItem(QAction& item);

  [[nodiscard]] QMenu& contextualMenu() { return *m_contextualMenu; }
  [[nodiscard]] QLXAStatusBarController* statusController() { return m_statusController.get(); }
  [[nodiscard]] AgentEntryWindowController* entryWindowController() { return m_entryWindowController.get(); }
  [[nodiscard]] const PTHotKey* globalHotKey() const { return m_globalShortcut.hotKey().get(); }
  [[nodiscard]] ReminderAlarm& reminderAlarm() { return m_reminderAlarm; }

 private:
  void buildContextualMenu();
  void menuItemWithTitle(const QString& title, MenuTag tag);
  void reloadEntryWindow();
  void startApplication();
  void packagePathDidChangeNotification();
  void entryShortcutDidChangeNotification();
  void toggleReminders();
  // For a start with settings that could not be read: reminders count as off until a notice of the other application.
  void startAlarmOnceSettingsAreReadable();
  [[nodiscard]] QString nextReminderText() const;
  [[nodiscard]] QString toolTip() const;
  void keepToolTipUpToDate();

  // The window's size in points. Nothing reads it: it is kept as the declared default.
  [[maybe_unused]] QSizeF m_entryWindowSize{328.0, 268.0};
  AgentServices m_services;
  QuilloConfig& m_config;
  AgentPlatform m_platform;
  AlertSheet m_alerts;
  OpenPanelSheet m_openPanel;
  EntryDraft& m_draft;
  ReminderAlarm m_reminderAlarm;
  // Declared in the order of need: the window's controller goes before the menu that it shows.
  std::unique_ptr<QMenu> m_contextualMenu;
  std::shared_ptr<AgentEntryWindowController> m_entryWindowController;
  std::unique_ptr<QLXAStatusBarController> m_statusController;
  // Why the shortcut does not work; empty when it does.
  QString m_shortcutProblem;
  GlobalShortcut m_globalShortcut;
  std::unique_ptr<AboutWindowController> m_aboutWindowController;  // null until it was asked for
  ReminderDelivery m_reminderDelivery;
  std::unique_ptr<Registration> m_settingsObservation;  // until they can be read
  // Last, so that nothing is heard of while the rest goes.
  std::vector<std::unique_ptr<Registration>> m_observations;
};

}  // namespace quillo
