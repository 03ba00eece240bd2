// The composition root of the main application: the one place in it that names the real services of the desktop.

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "about/ProgramIdentity.h"
#include "app/logging/LoggingSetup.h"
#include "app/switches/AgentManager.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/panels/AlertSheet.h"
#include "entry/panels/OpenPanelSheet.h"
#include "entry/session/EntryDraft.h"
#include "entry/spelling/SpellChecker.h"
#include "exchange/backup/BackupSchedule.h"
#include "foundation/Bundle.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/FileModeMask.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "journal/model/IndexedJournalReader.h"
#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusFileManager.h"
#include "platform/linux/SessionBusHelper.h"
#include "platform/linux/SessionBusNotifications.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemdTimers.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/VirtualKeyCodes.h"
#include "platform/linux/XdgLoginItems.h"
#include "platform/linux/XdgWorkspace.h"
#include "platform/linux/XkbKeyboardLayouts.h"
#include "platform/linux/desktop/Display.h"
#include "platform/linux/desktop/DisplayLoss.h"
#include "platform/linux/desktop/X11HotKeys.h"
#include "preferences/PreferencesWindow.h"
#include "preferences/model/OwnSettingsSync.h"
#include "preferences/setup/FirstStartWindow.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/services/OnlineServices.h"
#include "quillo/QuilloApplication.h"

#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>

#include <CLI/CLI.hpp>

#include <iostream>
#include <optional>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

struct Arguments {
  QStringList urls;
  std::optional<int> exitCode{};  // the program is to end at once
  // What the agent has to be given to use the same home.
  QStringList homeArguments{};
};

Arguments readArguments(int argc, char** argv) {
  CLI::App program("Quillo: read, search and write your journal.", "quillo");
  program.set_version_flag("--version", "quillo " QUILLO_VERSION);
  std::string home;
  std::vector<std::string> urls;
  program.add_option("--home", home, "Use this directory in place of the user's home")->type_name("DIR");
  program.add_option("URL", urls, "quillo://open, edit?entryId=UUID, post, preferences, setup or updatebookmarks");
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return {{}, program.exit(error) == 0 ? 0 : 2};
  }
  Arguments arguments;
  for (const std::string& url : urls) {
    arguments.urls << QString::fromStdString(url);
    if (requestOfURL(QUrl(arguments.urls.last()))) continue;
    std::cerr << "quillo: " << url << ": no URL that Quillo knows\n";
    return {{}, 2};
  }
  if (home.empty()) return arguments;
  const QString directory = QFile::decodeName(QByteArray::fromStdString(home));
  if (!QFileInfo(directory).isDir()) {
    std::cerr << "quillo: " << home << ": no such directory\n";
    return {{}, 1};
  }
  UserDirectories::moveTo(directory);
  arguments.homeArguments = {u"--home"_s, UserDirectories::current().home};
  return arguments;
}

// With another home it is another program: it must not answer for the one that the user works with.
QString instanceName() {
  const QString usual = qEnvironmentVariable("HOME");
  const QString home = UserDirectories::current().home;
  if (home == usual) return Identifier::mainApplication;
  return u"%1.h%2"_s.arg(Identifier::mainApplication, QString::number(qHash(home, 0), 16));
}

// What only the preferences and the first start use of the desktop; made when one of them is first shown.
class PreferencesPlatform {
 public:
  PreferencesPlatform(SessionBusApplications& applications, const QStringList& homeArguments)
      : m_applications(applications),
        m_helper(agentLoginHelper(homeArguments)),
        m_agent(applications, m_helper),
        m_loginItems(
            XdgLoginItems::autostartFolder(UserDirectories::current()), applications, m_helper,
            [this](const QString& program, const QStringList& words) { return m_agent.launch(program, words); }),
        m_timers(UserDirectories::current().configuration, /*isOfSession=*/homeArguments.isEmpty()),
        m_backupSchedule(m_timers, QCoreApplication::applicationDirPath() + u"/quilloctl"_s, homeArguments) {
    AgentManager::setSharedLoginItemServices(loginItems());
    PTKeyCodeTranslator::setKeyboardLayouts(&m_layouts);
    // A desktop's portal would ask the user in this program's name, and the agent's claim is another.
    if (X11HotKeys::isAvailable()) m_hotKeys = std::make_unique<X11HotKeys>();
  }
  ~PreferencesPlatform() {
    PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
    AgentManager::setSharedLoginItemServices({});
  }
  PreferencesPlatform(const PreferencesPlatform&) = delete;
  PreferencesPlatform& operator=(const PreferencesPlatform&) = delete;

  [[nodiscard]] LoginItemServices loginItems() {
    return {.loginItems = &m_loginItems, .runningApplications = &m_applications};
  }
  [[nodiscard]] HelperProcesses& agent() { return m_agent; }

  [[nodiscard]] BackupSchedule& backupSchedule() { return m_backupSchedule; }

  [[nodiscard]] ShortcutRecorderServices shortcut() {
    // Key codes of X, and so of Qt, are the kernel's with this added.
    constexpr quint32 offset = 8;
    return {.keyCode = [](const QKeyEvent& event) -> std::optional<qint64> {
              if (event.nativeScanCode() < offset) return std::nullopt;
              const auto key = virtualKeyOfEvdevCode(event.nativeScanCode() - offset);
              return key ? std::optional<qint64>(*key) : std::nullopt;
            },
            .hotKeys = m_hotKeys.get()};
  }
  [[nodiscard]] QString shortcutNote() const {
    if (m_hotKeys) return {};
    return u"Your desktop gives keys to programs and may ask you first; where it refuses, the quill's tool tip says "
           "so. Its own settings can run “quilloctl agent toggle” with a key, too."_s;
  }

  // What is proposed to somebody who has not used Quillo before.
  [[nodiscard]] FirstStart firstStart(QuilloConfig& config) {
    return FirstStart::suggested(config, [this](const PTKeyCombo& combo) {
      bool isFree = true;
      ShortcutTrial(m_hotKeys.get()).ask(combo, [&isFree](const QString& problem) { isFree = problem.isEmpty(); });
      return isFree;
    });
  }

  bool tryReminder(QString* reason) {
    const auto agents = m_applications.running(Identifier::agent);
    if (!agents.isEmpty()) return m_applications.remind(agents.last(), reason);
    *reason = u"the quill is not in the tray"_s;
    return false;
  }

 private:
  SessionBusApplications& m_applications;
  LoginHelper m_helper;
  SessionBusHelper m_agent;
  XdgLoginItems m_loginItems;
  SystemdTimers m_timers;
  BackupSchedule m_backupSchedule;
  XkbKeyboardLayouts m_layouts;
  std::unique_ptr<HotKeys> m_hotKeys;
};

std::unique_ptr<FirstStartWindow> makeFirstStart(QuilloConfig& config, PreferencesPlatform& platform,
                                                 OpenPanel& openPanel,
                                                 std::function<void(const FirstStart& choice)> finished) {
  NotificationCenter& center = DistributedNotificationCenter::sharedCenter();
  const FirstStartServices services{.config = config,
                                    .post = [&center](const QString& name) { center.postNotification(name); },
                                    .agentManager = &AgentManager::sharedManager,
                                    .loginItemServices = platform.loginItems(),
                                    .agent = platform.agent()};
  return std::make_unique<FirstStartWindow>(FirstStartWindowServices{
      .proposed = platform.firstStart(config),
      .shortcut = platform.shortcut(),
      .shortcutNote = platform.shortcutNote(),
      .openPanel = openPanel,
      .apply = [services](const FirstStart& choice, Error* error) { return choice.apply(services, error); },
      .startAgent = [services](const FirstStart& choice,
                               QString* reason) { return choice.startAgent(services, reason); },
      .finished = std::move(finished)});
}

void openEntryWindow(SessionBusApplications& applications) {
  const auto agents = applications.running(Identifier::agent);
  QString reason;
  // A new one ends those before it: the last is the one that stays.
  if (!agents.isEmpty() && !applications.toggle(agents.last(), &reason))
    QLLogWarn(u"The entry window does not open - %1"_s.arg(reason));
}

void logIntoFiles(QuilloConfig& config) {
  setUpLogging(QUrl::fromLocalFile(config.groupLogsDirectoryURL().toLocalFile() + u"/Quillo"_s),
               config.verboseLogging());
}

// From the set-up of the log to the end of the event loop.
int runQuillo(QApplication& application, SingleInstance& instance, const Arguments& arguments) {
  QuilloConfig& config = QuilloConfig::sharedConfig();
  // Before the first start has been gone through, nothing is to lie on the disk.
  if (config.hasGroupProperties())
    logIntoFiles(config);
  else
    setUpLogging(QUrl(), /*verbose=*/false);
  const TerminationSignals signals([] { QApplication::exit(); });
  SessionBusNotifications notifications;
  DistributedNotificationCenter::sharedCenter().setTransport(&notifications);
  SessionBusApplications runningApplications;
  runningApplications.registerSelf(Identifier::mainApplication, [] { QApplication::exit(); });
  XdgWorkspace workspace;
  SessionBusFileManager fileManager;
  config.setWorkspace(&workspace);
  QLJournalPackageFile::setDefaultPackageURLProvider([&config] { return config.configuredJournalFileURL(); });
  const UserDirectories& directories = UserDirectories::current();
  UserDefaults& defaults = UserDefaults::standardUserDefaults();
  UserDefaults agentDefaults(directories.configuration + u"/quillo"_s, Identifier::agent);
  const OwnSettingsSync ownSettings(defaults, agentDefaults, NotificationCenter::localCenter(),
                                    DistributedNotificationCenter::sharedCenter());
  const SystemClock clock;
  const auto weather = onlineWeather(clock, defaults, directories.caches);
  AlertSheet alerts;
  OpenPanelSheet openPanel;

  int code = 0;
  {
    SpellChecker spellChecker(SpellChecker::standardSources(directories));
    std::optional<PreferencesPlatform> forPreferences;
    EntryDraft draft(directories.state + u"/quillo/UnsavedEntryOfQuillo.plist"_s);
    QuilloApplication quillo(
        {.config = config,
         .bundle = Bundle::mainBundle(),
         .distributedCenter = DistributedNotificationCenter::sharedCenter(),
         .defaults = defaults,
         .text = {.defaults = defaults, .localCenter = NotificationCenter::localCenter(), .spellChecker = spellChecker},
         .draft = draft,
         .workspace = workspace,
         .fileManager = fileManager,
         .weather = *weather,
         .makeLocationManager = [&defaults] { return onlineLocation(defaults); },
         .makeReader = [](const QLJournalPackageFile& package) -> std::unique_ptr<JournalReader> {
           return std::make_unique<IndexedJournalReader>(package);
         },
         .alerts = alerts,
         .openPanel = openPanel,
         .makePreferences =
             [&] {
               if (!forPreferences) forPreferences.emplace(runningApplications, arguments.homeArguments);
               return std::make_unique<PreferencesWindow>(PreferencesServices{
                   .settings = {.config = config,
                                .distributedCenter = DistributedNotificationCenter::sharedCenter(),
                                .localCenter = NotificationCenter::localCenter(),
                                .ownSettings = {&defaults, &agentDefaults}},
                   .agentManager = &AgentManager::sharedManager,
                   .remindersManager = &RemindersManager::sharedManager,
                   .loginItems = [&forPreferences] { return forPreferences->loginItems(); },
                   .agent = forPreferences->agent(),
                   .shortcut = forPreferences->shortcut(),
                   .shortcutNote = forPreferences->shortcutNote(),
                   .workspace = workspace,
                   .openPanel = openPanel,
                   .spellChecker = spellChecker,
                   .tryReminder = [&forPreferences](QString* reason) { return forPreferences->tryReminder(reason); },
                   .logFolder = config.groupLogsDirectoryURL().toLocalFile(),
                   .backupSchedule = &forPreferences->backupSchedule()});
             },
         .makeFirstStart =
             [&](std::function<void(const FirstStart& choice)> finished) {
               if (!forPreferences) forPreferences.emplace(runningApplications, arguments.homeArguments);
               return makeFirstStart(config, *forPreferences, openPanel,
                                     [&config, finished = std::move(finished)](const FirstStart& choice) {
                                       if (logDirectory().isEmpty()) logIntoFiles(config);
                                       finished(choice);
                                     });
             },
         .openEntryWindow = [&] { openEntryWindow(runningApplications); },
         .terminate = [] { QApplication::exit(); }});
    QObject::connect(&application, &QApplication::aboutToQuit, &quillo, &QuilloApplication::willTerminate);
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &quillo, &QuilloApplication::willTerminate,
                     Qt::DirectConnection);
    const DisplayLoss displayLoss([&quillo] { quillo.willTerminate(); });
    quillo.open(arguments.urls);
    instance.setOnOpen([&quillo](const QStringList& words, const QString& token) {
      if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
      quillo.open(words);
    });
    code = QApplication::exec();
    instance.setOnOpen({});
  }
  DistributedNotificationCenter::sharedCenter().setTransport(nullptr);
  closeLog();
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  // Entries, settings and logs are for the user alone.
  FileModeMask::makePrivate();
  const Arguments arguments = readArguments(argc, argv);
  if (arguments.exitCode) return *arguments.exitCode;
  std::optional<DisplayRequirement> needed("quillo: there is no display to show the window on (is DISPLAY set?)");
  QApplication application(argc, argv);
  needed.reset();
  QApplication::setApplicationName(u"quillo"_s);
  QApplication::setApplicationVersion(QStringLiteral(QUILLO_VERSION));
  QApplication::setDesktopFileName(Identifier::mainApplication);
  // As large as switchers of windows show it; whoever wants it larger has it from the desktop file.
  QApplication::setWindowIcon(programIcon(/*largest=*/128));
  Bundle::setMainBundle(programBundle(Identifier::mainApplication, QStringLiteral(QUILLO_VERSION)));

  SingleInstance instance(instanceName());
  switch (instance.join(arguments.urls)) {
    case SingleInstance::Role::HandedOver:
      return 0;
    case SingleInstance::Role::Refused:
      std::cerr << "quillo: it runs already and does not answer\n";
      return 1;
    case SingleInstance::Role::First:
      break;
  }
  return runQuillo(application, instance, arguments);
}
