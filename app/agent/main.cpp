// The composition root of the agent: the one place that names the real services of the desktop.

#include "PTHotKey/PTHotKeyCenter.h"
#include "PTHotKey/PTKeyCodeTranslator.h"
#include "about/ProgramIdentity.h"
#include "app/QuilloAgentAppDelegate.h"
#include "app/QuilloctlTags.h"
#include "app/RestingMemory.h"
#include "app/SessionEnd.h"
#include "app/logging/LoggingSetup.h"
#include "app/switches/AgentManager.h"
#include "app/switches/LoginItem.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/session/EntryDraft.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/Bundle.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/FileModeMask.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "platform/Registration.h"
#include "platform/linux/LinuxSystemEvents.h"
#include "platform/linux/ProgramAnswer.h"
#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusNotifications.h"
#include "platform/linux/SessionBusUserNotifications.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/WallClockTimer.h"
#include "platform/linux/XdgLoginItems.h"
#include "platform/linux/XdgWorkspace.h"
#include "platform/linux/XkbKeyboardLayouts.h"
#include "platform/linux/desktop/DesktopHotKeys.h"
#include "platform/linux/desktop/Display.h"
#include "platform/linux/desktop/DisplayLoss.h"
#include "platform/linux/desktop/KeyboardHints.h"
#include "platform/linux/desktop/RawButtonPresses.h"
#include "platform/linux/desktop/TrayStatusItem.h"
#include "platform/linux/sound/SoundEffects.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/OnlineServices.h"
#include "qlcore/services/PlaceTable.h"
#include "reminders/SystemNotices.h"

#include <QApplication>
#include <QFileInfo>
#include <QPixmapCache>

#include <CLI/CLI.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// Answers an exit code where the program is to end at once. What a copy of it that is started at login has to be given
// to use the same home goes into `homeArguments`.
std::optional<int> readArguments(int argc, char** argv, QStringList& homeArguments) {
  CLI::App program("Quillo's menu-bar agent: a quill in the tray, a click away from writing into the journal.",
                   "quillo-agent");
  program.set_version_flag("--version", "quillo-agent " QUILLO_VERSION);
  std::string home;
  program.add_option("--home", home, "Use this directory in place of the user's home")->type_name("DIR");
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : 2;
  }
  if (home.empty()) return std::nullopt;
  const QString directory = QFile::decodeName(QByteArray::fromStdString(home));
  if (!QFileInfo(directory).isDir()) {
    std::cerr << "quillo-agent: " << home << ": no such directory\n";
    return 1;
  }
  UserDirectories::moveTo(directory);
  homeArguments = {u"--home"_s, UserDirectories::current().home};
  return std::nullopt;
}

// Qt and the X library wait for ever, or end the program, where they get no descriptor; an idle agent has 15.
// False, with the reason said, where so few are allowed that this is bound to happen.
bool takeEnoughDescriptors() {
  static constexpr rlim_t wanted = 4096;
  static constexpr rlim_t needed = 64;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return true;
  if (limit.rlim_cur < wanted) {
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  if (limit.rlim_cur >= needed) return true;
  std::cerr << "quillo-agent: only " << limit.rlim_cur << " open files are allowed (ulimit -Hn), " << needed
            << " are needed\n";
  return false;
}

AgentServices agentServices(QuilloConfig& config, EntryDraft& draft, SpellChecker& spellChecker) {
  return {.config = config,
          .bundle = Bundle::mainBundle(),
          .localCenter = NotificationCenter::localCenter(),
          .workspaceCenter = NotificationCenter::workspaceCenter(),
          .distributedCenter = DistributedNotificationCenter::sharedCenter(),
          .hotKeyCenter = PTHotKeyCenter::sharedCenter(),
          .crashReportManager = CrashReportManager::sharedManager(),
          .draft = draft,
          .text = {.defaults = UserDefaults::standardUserDefaults(),
                   .localCenter = NotificationCenter::localCenter(),
                   .spellChecker = spellChecker},
          .remindersManager = &RemindersManager::sharedManager,
          .usageTracker = &QLMixpanelTracker::sharedInstance};
}

// Asks the quilloctl that lies beside this program.
TagSource tagSource(const QStringList& homeArguments) {
  using namespace std::chrono_literals;
  static constexpr ProgramAnswer::Limits limits{.bytes = qsizetype{512} * 1024, .time = 30s};
  return [arguments = homeArguments + QuilloctlTags::arguments()](std::function<void(const QStringList&)> answer) {
    const auto answered = [answer = std::move(answer)](const std::optional<QByteArray>& output, const QString& reason) {
      const auto tags = output ? QuilloctlTags::tagsOfAnswer(*output) : std::nullopt;
      if (tags) return answer(*tags);
      QLLogInfo(u"The tags in use are not known - %1"_s.arg(output ? u"quilloctl gives no list of them"_s : reason));
    };
    const QString program = QApplication::applicationDirPath() + u"/quilloctl"_s;
    auto question = std::make_shared<ProgramAnswer>(program, arguments, limits, answered);
    return std::make_unique<Registration>([question = std::move(question)] {});
  };
}

EntryWindowDesktop windowDesktop() {
  EntryWindowDesktop desktop{.isComposited = compositorIsRunning, .keepOutOfTaskBar = keepOutOfTaskBar};
  if (isWaylandSession()) {
    desktop.leaveKeyboard = leaveKeyboard;
    const bool isX = showsThroughX();
    desktop.placement = isX ? WindowPlacement::WindowManager : WindowPlacement::Compositor;
    desktop.windowsTakeKeyboard = !isX;
  }
  return desktop;
}

// From the set-up of the log to the end of the event loop.
int runAgent(QApplication& application, const QStringList& homeArguments, DisplayChoice display) {
  QuilloConfig& config = QuilloConfig::sharedConfig();
  QuilloAgentAppDelegate::initialize(config);
  QLLogInfo(description(display));
  const TerminationSignals signals([] { QApplication::exit(); });
  SessionBusNotifications notifications;
  DistributedNotificationCenter::sharedCenter().setTransport(&notifications);
  SessionBusApplications runningApplications;
  runningApplications.registerSelf(Identifier::agent, [] { QApplication::exit(); });
  XdgWorkspace workspace;
  config.setWorkspace(&workspace);
  QLJournalPackageFile::setDefaultPackageURLProvider([&config] { return config.configuredJournalFileURL(); });

  const UserDirectories& directories = UserDirectories::current();
  UserDefaults& ownDefaults = UserDefaults::standardUserDefaults();
  XdgLoginItems loginItems(XdgLoginItems::autostartFolder(directories), runningApplications,
                           agentLoginHelper(homeArguments));
  AgentManager::setSharedLoginItemServices({.loginItems = &loginItems, .runningApplications = &runningApplications});
  const SystemClock clock;
  WallClockTimerFactory timers(clock);
  XkbKeyboardLayouts keyboardLayouts;
  PTKeyCodeTranslator::setKeyboardLayouts(&keyboardLayouts);
  const auto hotKeys = hotKeysOfDesktop(u"Write a journal entry"_s, keyboardLayouts);
  PTHotKeyCenter::sharedCenter().setPlatform(hotKeys.get());

  RawButtonPresses outsideClicks;
  const auto weather = onlineWeather(clock, ownDefaults, directories.caches);
  SoundEffects sounds(Bundle::mainBundle());
  SessionBusUserNotifications userNotifications(u"quillo-agent"_s, sounds);

  int code = 0;
  {
    SpellChecker spellChecker(SpellChecker::standardSources(directories));
    EntryDraft draft(EntryDraft::defaultPath(), EntryDraft::defaultFormerPath());
    QuilloAgentAppDelegate delegate(agentServices(config, draft, spellChecker),
                                    {.runningApplications = runningApplications,
                                     .workspace = workspace,
                                     .makeStatusItem = [] { return std::make_unique<TrayStatusItem>(); },
                                     .windowDesktop = windowDesktop(),
                                     .outsideClicks = outsideClicks,
                                     .makeLocationManager = [&ownDefaults] { return onlineLocation(ownDefaults); },
                                     .weather = *weather,
                                     .clock = clock,
                                     .timers = timers,
                                     .terminate = [] { QApplication::exit(); },
                                     .tags = tagSource(homeArguments),
                                     .userNotifications = &userNotifications,
                                     .sounds = &sounds});
    QObject::connect(&application, &QApplication::aboutToQuit, &delegate,
                     [&delegate] { delegate.applicationWillTerminate(); });
    const SessionEnd sessionEnd(application, [&delegate] { delegate.applicationWillTerminate(); });
    const DisplayLoss displayLoss([&delegate] { delegate.applicationWillTerminate(); });
    runningApplications.setOnToggle([&delegate] { delegate.hitHotKey(nullptr); });
    runningApplications.setOnRemind([&delegate] { delegate.tryReminder(); });
    const auto ownSettings =
        DistributedNotificationCenter::sharedCenter().observe(Notice::settingsDidChange, [&](const Notification&) {
          if (PersistentPropertyList* list = config.groupProperties()) list->synchronize();
          setLogIsVerbose(config.verboseLogging());
          spellChecker.learnedWordsDidChange();
          if (ownDefaults.synchronize())
            NotificationCenter::localCenter().postNotification(Notice::spellingAndGrammarSettingsDidChange);
          delegate.settingsDidChange();
        });
    delegate.applicationWillFinishLaunching();
    delegate.applicationDidFinishLaunching();
    const RestingMemory restingMemory(
        NotificationCenter::localCenter(),
        [&delegate] { return delegate.statusController() && delegate.statusController()->isShowingEntryWindow(); },
        [&spellChecker] {
          spellChecker.unload();
          PlaceTable::unload();
        });
    // After the icon: nothing of the system has to be listened to for showing it.
    LinuxSystemEvents events;
    postSystemNotices(events, NotificationCenter::localCenter(), NotificationCenter::workspaceCenter());
    code = QApplication::exec();
    runningApplications.setOnToggle(nullptr);
    runningApplications.setOnRemind(nullptr);
  }
  PTHotKeyCenter::sharedCenter().setPlatform(nullptr);
  PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
  DistributedNotificationCenter::sharedCenter().setTransport(nullptr);
  closeLog();
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  // Entries, settings and logs are for the user alone.
  FileModeMask::makePrivate();
  QStringList homeArguments;
  if (const auto code = readArguments(argc, argv, homeArguments)) return *code;
  if (!takeEnoughDescriptors()) return 1;

  std::optional<DisplayRequirement> needed(
      "quillo-agent: there is no display to show the tray icon on (is DISPLAY set?)");
  const DisplayChoice display = chooseDisplay();
  QApplication application(argc, argv);
  restoreEnvironment(display);
  needed.reset();
  QApplication::setApplicationName(u"quillo-agent"_s);
  QApplication::setApplicationVersion(QStringLiteral(QUILLO_VERSION));
  QApplication::setDesktopFileName(u"quillo-agent"_s);
  // With the first window that a person sees: the tray's has no use for it. Small, as the entry window is in no list
  // that shows large ones, and all of them would come before its first frame.
  static constexpr int largestIcon = 64;
  QObject::connect(
      &application, &QGuiApplication::focusWindowChanged, &application,
      [] { QApplication::setWindowIcon(programIcon(largestIcon)); }, Qt::SingleShotConnection);
  // There is no main window whose closing would mean the end.
  QApplication::setQuitOnLastWindowClosed(false);
  Bundle::setMainBundle(programBundle(Identifier::agent, QStringLiteral(QUILLO_VERSION)));
  // Qt's cache would wake the idle agent half a minute after each drawing of the icon, to look for pixmaps
  // that nobody uses. What the agent draws is small and seldom.
  QPixmapCache::setCacheLimit(0);

  return runAgent(application, homeArguments, display);
}
