#include "app/QuilloAgentAppDelegate.h"

#include "app/logging/LoggingSetup.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/URLAccess.h"
#include "foundation/Bookmark.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/RelativeDateText.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"

#include <QAction>
#include <QApplication>
#include <QMenu>

#include <chrono>

namespace quillo {

using namespace Qt::StringLiterals;

// What the crash reports are filed under, and whose they are.
static constexpr QLatin1StringView crashReportIdentifier{"4f1c9e07a2b85d3e6c0f91a7b2d4e853"};
static constexpr QLatin1StringView companyName{"Tallowmere, LLC"};
// The services for place and weather bring in libraries for the network and the position.
static constexpr std::chrono::milliseconds firstSearchDelay{100};

void QuilloAgentAppDelegate::initialize(QuilloConfig& config) {
  const QUrl directory = QUrl::fromLocalFile(config.groupLogsDirectoryURL().toLocalFile() + u"/Agent"_s);
  setUpLogging(directory, config.verboseLogging());
}

// Its address tells the delegate's own observation of the reminders from any other.
static constexpr char remindersContext = 0;

QuilloAgentAppDelegate::QuilloAgentAppDelegate(AgentServices services, AgentPlatform platform)
    : m_services(std::move(services)),
      m_config(m_services.config),
      m_platform(std::move(platform)),
      m_draft(m_services.draft),
      m_reminderAlarm([this] { return m_config.groupProperties(); }, this,
                      [this](ReminderAlarm&) { reminderAlarmFired(); },
                      {.clock = m_platform.clock,
                       .timers = m_platform.timers,
                       .localCenter = &m_services.localCenter,
                       .workspaceCenter = &m_services.workspaceCenter,
                       .distributedCenter = &m_services.distributedCenter}),
      m_globalShortcut(
          m_services.hotKeyCenter, *this, [this](PTHotKey& hotKey) { hitHotKey(&hotKey); },
          [this](const QString& problem) {
            m_shortcutProblem = problem;
            if (m_statusController) m_statusController->updateToolTip();
          }),
      m_reminderDelivery([this] { return m_config.groupProperties(); },
                         {.bundle = m_services.bundle,
                          .statusController = [this] { return m_statusController.get(); },
                          .entryWindowController = [this] { return m_entryWindowController; },
                          .userNotifications = m_platform.userNotifications,
                          .sounds = m_platform.sounds,
                          .workspace = &m_platform.workspace}) {
  buildContextualMenu();
}

QuilloAgentAppDelegate::~QuilloAgentAppDelegate() = default;

void QuilloAgentAppDelegate::buildContextualMenu() {
  m_contextualMenu = std::make_unique<QMenu>();
  menuItemWithTitle(u"Show Quillo Application"_s, ShowApplication);
  m_contextualMenu->addSeparator();
  menuItemWithTitle(u"Reminders: Off"_s, ReminderLine);
  menuItemWithTitle(u"Disable Reminders"_s, ToggleReminders);
  m_contextualMenu->addSeparator();
  menuItemWithTitle(u"Preferences..."_s, Preferences);
  m_contextualMenu->addSeparator();
  menuItemWithTitle(u"About Quillo"_s, About);
  m_contextualMenu->addSeparator();
  menuItemWithTitle(u"Quit Quillo"_s, Quit);
  // Items are validated each time the menu opens, top to bottom.
  connect(m_contextualMenu.get(), &QMenu::aboutToShow, this, [this] {
    for (QAction* item : m_contextualMenu->actions())
      if (!item->isSeparator()) item->setEnabled(validateMenuItem(*item));
  });
}

void QuilloAgentAppDelegate::menuItemWithTitle(const QString& title, MenuTag tag) {
  QAction* item = m_contextualMenu->addAction(title);
  item->setData(static_cast<int>(tag));
  connect(item, &QAction::triggered, this, [this, tag] { contextualMenuItemClicked(tag); });
}

bool QuilloAgentAppDelegate::validateMenuItem(QAction& item) {
  const int tag = item.data().toInt();
  // Once an opening, with the first item: the menu shows what the main application wrote last.
  if (tag == ShowApplication)
    if (PersistentPropertyList* list = m_config.groupProperties()) list->synchronize();
  const bool remind = m_services.remindersManager().remindersAreEnabled();
  if (tag == ReminderLine) item.setText(remind ? u"Next Reminder: "_s + nextReminderText() : u"Reminders: Off"_s);
  if (tag == ToggleReminders) item.setText(remind ? u"Disable Reminders"_s : u"Enable Reminders"_s);
  return tag != ReminderLine;
}

QString QuilloAgentAppDelegate::nextReminderText() const {
  const auto date = m_reminderAlarm.nextAlarmDate();
  // Reminders are on and none could be calculated: the line ends in the text of a missing object, as the main
  // application shows it too.
  return date ? relativeDateText(*date, Calendar::currentCalendar()) : u"(null)"_s;
}

QString QuilloAgentAppDelegate::toolTip() const {
  const bool remind = m_services.remindersManager().remindersAreEnabled() && m_reminderAlarm.nextAlarmDate();
  const QString text = remind ? u"Next Reminder: "_s + nextReminderText() : u"Quillo"_s;
  return m_shortcutProblem.isEmpty() ? text : text + u'\n' + m_shortcutProblem;
}

void QuilloAgentAppDelegate::keepToolTipUpToDate() {
  // Whatever makes the alarm calculate anew. Panels that ask for the tip when they show it need none of this.
  const auto update = [this](const Notification&) { m_statusController->updateToolTip(); };
  NotificationCenter& local = m_services.localCenter;
  m_observations.push_back(local.observe(Notice::systemClockDidChange, update));
  m_observations.push_back(local.observe(Notice::systemTimeZoneDidChange, update));
  m_observations.push_back(m_services.workspaceCenter.observe(Notice::workspaceDidWake, update));
  m_observations.push_back(m_services.distributedCenter.observe(Notice::reminderSettingsDidChange, update));
}

void QuilloAgentAppDelegate::toggleReminders() {
  RemindersManager& reminders = m_services.remindersManager();
  const bool wereOn = reminders.remindersAreEnabled();
  reminders.setRemindersAreEnabled(!wereOn);
  // The same change reaches the delegate's observation by way of the notification; a repetition is harmless.
  if (wereOn) {
    m_reminderAlarm.stop();
  } else {
    m_reminderAlarm.reset();
    m_reminderAlarm.start();
  }
}

void QuilloAgentAppDelegate::contextualMenuItemClicked(int tag) {
  switch (tag) {
    case ShowApplication:
      if (m_entryWindowController) m_entryWindowController->close();
      launchMainApp();
      break;
    case ToggleReminders:
      toggleReminders();
      break;
    case Preferences:
      m_platform.workspace.openURL(QUrl(u"quillo://preferences"_s));
      break;
    case About:
      orderFrontAboutWindow();
      break;
    case Quit:
      // The agent's quit command ends the whole product; the main application is asked politely, without waiting.
      for (const RunningApplication& application : m_platform.runningApplications.running(Identifier::mainApplication))
        m_platform.runningApplications.terminate(application);
      m_platform.terminate();
      break;
    default:
      break;
  }
}

bool QuilloAgentAppDelegate::launchMainApp() {
  return m_platform.workspace.openURL(QUrl(u"quillo://open"_s));
}

void QuilloAgentAppDelegate::resolveJournalFileAccess() {
  m_config.startAccessingSecurityScopedResources();
  const auto url = m_config.configuredJournalFileURL();
  const bool reachable = url && URLAccess::isReadable(*url) && URLAccess::isWritable(*url);
  PersistentPropertyList* list = m_config.groupProperties();
  const auto shared = list && !reachable ? list->objectForKey(Key::journalFileSharedBookmarkData) : std::nullopt;
  if (shared) {
    Error error;
    if (Bookmark::resolve(shared->data(), Bookmark::plain, &error)) {
      m_config.stopAccessingSecurityScopedResources();
      m_config.updateBookmarkDataForConfiguredJournalFile();
      m_config.startAccessingSecurityScopedResources();
    } else {
      QLLogInfo(u"Unable to resolve shared bookmark - %1"_s.arg(error.description()));
    }
  }
  // Access is open only while this runs; whoever needs it later opens it.
  m_config.stopAccessingSecurityScopedResources();
}

void QuilloAgentAppDelegate::applicationWillFinishLaunching() {
  resolveJournalFileAccess();
  const qint64 own = m_platform.runningApplications.currentProcessIdentifier();
  for (const RunningApplication& application : m_platform.runningApplications.running(Identifier::agent))
    if (application.processIdentifier != own) m_platform.runningApplications.terminate(application);
}

void QuilloAgentAppDelegate::applicationDidFinishLaunching() {
  CrashReportManager& manager = m_services.crashReportManager;
  manager.configureWithIdentifier(crashReportIdentifier, companyName, this);
  manager.setExceptionInterceptionEnabled(true);
  manager.startManager();
}

void QuilloAgentAppDelegate::showMainApplicationWindow() {
  if (!m_entryWindowController) startApplication();
}

void QuilloAgentAppDelegate::startApplication() {
  reloadEntryWindow();

  m_statusController = std::make_unique<QLXAStatusBarController>(m_services.localCenter);
  // The menu goes first: the status item takes over the controller's copy of it, which sorts the clicks.
  m_statusController->setContextualMenu(m_contextualMenu.get());
  m_statusController->setStatusItem(m_platform.makeStatusItem());
  m_statusController->setToolTip([this] { return toolTip(); });
  m_statusController->setEntryWindowController(m_entryWindowController);

  RemindersManager& reminders = m_services.remindersManager();
  m_observations.push_back(
      reminders.addObserver(*this, RemindersManager::remindersAreEnabledKeyPath, &remindersContext));
  NotificationCenter& distributed = m_services.distributedCenter;
  m_observations.push_back(distributed.observe(Notice::journalPackagePathDidChange,
                                               [this](const Notification&) { packagePathDidChangeNotification(); }));
  m_observations.push_back(distributed.observe(Notice::menuBarEntryShortcutDidChange,
                                               [this](const Notification&) { entryShortcutDidChangeNotification(); }));

  if (reminders.remindersAreEnabled())
    m_reminderAlarm.start();
  else if (!m_config.groupProperties())
    startAlarmOnceSettingsAreReadable();
  resetGlobalShortcut();
  keepToolTipUpToDate();

  QLMixpanelTracker::setTrackingEnabled(m_config.sendUsageData());
  m_services.usageTracker();
}

void QuilloAgentAppDelegate::startAlarmOnceSettingsAreReadable() {
  m_settingsObservation =
      m_services.distributedCenter.observe(Notice::reminderSettingsDidChange, [this](const Notification&) {
        if (!m_config.groupProperties()) return;
        m_settingsObservation.reset();
        if (m_services.remindersManager().remindersAreEnabled()) m_reminderAlarm.start();
      });
}

void QuilloAgentAppDelegate::observeValueForKeyPath(const QString&, KeyValueObservable&, const void* context) {
  if (context != &remindersContext) return;
  if (m_services.remindersManager().remindersAreEnabled()) {
    m_reminderAlarm.reset();
    m_reminderAlarm.start();
  } else {
    m_reminderAlarm.stop();
  }
  m_statusController->updateToolTip();
}

void QuilloAgentAppDelegate::reminderAlarmFired() {
  // The alarm moves on to the next reminder once this is done.
  if (m_statusController) m_statusController->updateToolTip();
  m_reminderDelivery.reminderAlarmFired();
}

void QuilloAgentAppDelegate::tryReminder() {
  // The ways of delivery may have been chosen a moment ago.
  if (PersistentPropertyList* list = m_config.groupProperties()) list->synchronize();
  m_reminderDelivery.reminderAlarmFired();
}

void QuilloAgentAppDelegate::settingsDidChange() {
  if (m_entryWindowController) m_entryWindowController->settingsDidChange();
}

void QuilloAgentAppDelegate::orderFrontAboutWindow() {
  if (!m_aboutWindowController)
    m_aboutWindowController = std::make_unique<AboutWindowController>(m_platform.workspace, m_services.bundle);
  m_aboutWindowController->showWindow();
}

void QuilloAgentAppDelegate::reloadEntryWindow() {
  const auto before = m_entryWindowController;
  if (before) before->closeForReplacement();
  m_entryWindowController = std::make_shared<AgentEntryWindowController>(
      AgentEntryWindowServices{.config = m_config,
                               .alerts = m_alerts,
                               .openPanel = m_openPanel,
                               .draft = m_services.draft,
                               .text = m_services.text,
                               .usageTracker = m_services.usageTracker,
                               .notices = m_services.localCenter,
                               .journalFile = &QLJournalPackageFile::defaultPackage,
                               .emptyJournalEntry = &QLJournalEntryFile::emptyJournalEntry,
                               .tags = m_platform.tags,
                               .workspace = &m_platform.workspace,
                               .outsideClicks = &m_platform.outsideClicks,
                               .makeLocationManager = m_platform.makeLocationManager,
                               .firstSearchDelay = firstSearchDelay,
                               .weather = &m_platform.weather,
                               .compositorIsRunning = m_platform.compositorIsRunning,
                               .keepOutOfTaskBar = m_platform.keepOutOfTaskBar},
      &m_reminderAlarm);
  m_entryWindowController->setContextualMenu(m_contextualMenu.get());
  // What the old journal would not take is not lost with the old window.
  if (before) m_entryWindowController->takeOverUnsavedText(*before);
}

void QuilloAgentAppDelegate::packagePathDidChangeNotification() {
  if (PersistentPropertyList* list = m_config.groupProperties()) list->synchronize();
  resolveJournalFileAccess();
  reloadEntryWindow();
  m_statusController->setEntryWindowController(m_entryWindowController);
}

void QuilloAgentAppDelegate::hitHotKey(PTHotKey*) {
  if (!m_statusController) return;
  // An open menu of this program would lie over the window, and have its keyboard. A menu in a menu is the most there
  // is; the bound is for one that does not close.
  for (int depth = 0; depth < 8 && QApplication::activePopupWidget(); ++depth)
    QApplication::activePopupWidget()->close();
  if (m_statusController->isShowingEntryWindow())
    m_statusController->hideEntryWindow();
  else
    m_statusController->showEntryWindowInMode(EntryWindowModeStandard);
}

void QuilloAgentAppDelegate::resetGlobalShortcut() {
  m_globalShortcut.reset(m_config.groupProperties());
}

void QuilloAgentAppDelegate::entryShortcutDidChangeNotification() {
  if (PersistentPropertyList* list = m_config.groupProperties()) list->synchronize();
  resetGlobalShortcut();
}

void QuilloAgentAppDelegate::applicationWillTerminate() {
  // Not by closing the window: where the save fails, that would show an alert.
  if (m_entryWindowController) m_entryWindowController->saveForTermination();
}

}  // namespace quillo
