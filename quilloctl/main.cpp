// The composition root of quilloctl: the main application's side of the shared settings, from a terminal.

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "app/switches/AgentManager.h"
#include "app/switches/LoginItem.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "exchange/backup/BackupSchedule.h"
#include "foundation/Bundle.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/FileModeMask.h"
#include "platform/Sounds.h"
#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusHelper.h"
#include "platform/linux/SessionBusNotifications.h"
#include "platform/linux/SessionBusUserNotifications.h"
#include "platform/linux/SystemdTimers.h"
#include "platform/linux/XdgLoginItems.h"
#include "platform/linux/XdgWorkspace.h"
#include "platform/linux/XkbKeyboardLayouts.h"
#include "quilloctl/Command.h"
#include "quilloctl/CommandTree.h"
#include "quilloctl/NearestWords.h"
#include "quilloctl/PageDrawing.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

bool toggleAgent(QString* reason) {
  SessionBusApplications applications;
  const auto agents = applications.running(Identifier::agent);
  if (agents.isEmpty()) {
    *reason = u"no agent is running in this session"_s;
    return false;
  }
  // A new one ends those before it: the last is the one that stays.
  return applications.toggle(agents.last(), reason);
}

// The services of the desktop. The bus is joined only when there is something to say.
class Services {
 public:
  // The arguments are for an agent that is started.
  explicit Services(QStringList homeArguments) : m_homeArguments(std::move(homeArguments)) {}
  ~Services() { DistributedNotificationCenter::sharedCenter().setTransport(nullptr); }
  Services(const Services&) = delete;
  Services& operator=(const Services&) = delete;

  bool post(const QString& name) {
    joinNotifications();
    return m_notifications->post(name);
  }

  BackupSchedule& backupSchedule() {
    if (!m_backupSchedule) {
      m_timers.emplace(UserDirectories::current().configuration, /*isOfSession=*/m_homeArguments.isEmpty());
      m_backupSchedule.emplace(*m_timers, QCoreApplication::applicationFilePath(), m_homeArguments);
    }
    return *m_backupSchedule;
  }

  ctl::Session session() {
    joinNotifications();
    if (!m_loginItems) {
      m_applications.emplace();
      const LoginHelper helper = agentLoginHelper(m_homeArguments);
      m_agent.emplace(*m_applications, helper);
      m_loginItems.emplace(
          XdgLoginItems::autostartFolder(UserDirectories::current()), *m_applications, helper,
          [this](const QString& program, const QStringList& arguments) { return m_agent->launch(program, arguments); });
      AgentManager::setSharedLoginItemServices(loginItemServices());
    }
    return {.runningApplications = *m_applications,
            .agent = *m_agent,
            .workspace = m_workspace,
            .loginItemServices = loginItemServices(),
            .agentManager = &AgentManager::sharedManager,
            .notify = notify};
  }

 private:
  LoginItemServices loginItemServices() {
    return {.loginItems = &*m_loginItems, .runningApplications = &*m_applications};
  }

  struct Silence final : Sounds {
    bool playSoundNamed(const QString&) override { return false; }
  };

  static void notify(const QString& title, const QString& text) {
    Silence silence;
    SessionBusUserNotifications center(u"quillo-agent"_s, silence);
    center.deliverNotification({0, title, text, {}});
    // The desktop is asked and told in turns of the event loop.
    QEventLoop loop;
    QTimer::singleShot(1000, &loop, &QEventLoop::quit);
    loop.exec();
  }

  void joinNotifications() {
    if (m_notifications) return;
    m_notifications.emplace();
    DistributedNotificationCenter::sharedCenter().setTransport(&*m_notifications);
  }

  QStringList m_homeArguments;
  XdgWorkspace m_workspace;
  std::optional<SessionBusNotifications> m_notifications;
  std::optional<SessionBusApplications> m_applications;
  std::optional<SessionBusHelper> m_agent;
  std::optional<XdgLoginItems> m_loginItems;
  std::optional<SystemdTimers> m_timers;
  std::optional<BackupSchedule> m_backupSchedule;
};

struct CommonOptions {
  std::string home;
  bool json{false};
};

// They may stand before the command and after it.
void addCommonOptions(CLI::App& command, CommonOptions& options) {
  const std::string group = command.get_parent() ? "Of every command" : "Options";
  command.add_option("--home", options.home, "Use this directory in place of the user's home")
      ->type_name("DIR")
      ->check(ctl::notEmpty("a directory is expected"))
      ->group(group);
  command.add_flag("--json", options.json, "Print one JSON document")->group(group);
  for (CLI::App* part : command.get_subcommands({})) addCommonOptions(*part, options);
}

void addCommands(CLI::App& program, ctl::Action& action, CommonOptions& options, ctl::PageDrawing& drawing) {
  ctl::addSetupCommand(program, action);
  ctl::addSettingsCommand(program, action);
  ctl::addJournalCommand(program, action);
  ctl::addEntryCommand(program, action);
  ctl::addExportCommand(program, action, drawing);
  ctl::addImportCommand(program, action);
  ctl::addBackupCommand(program, action);
  ctl::addReminderCommand(program, action);
  ctl::addShortcutCommand(program, action);
  ctl::addAgentCommand(program, action);
  ctl::addOpenURLCommand(program, action);
  ctl::addPostCommand(program, action);
  ctl::addCompleteCommand(program, action, options.home);
}

// Of a word that is no command the parser says only that one is required.
QString reasonOf(const CLI::App& program, const CLI::ParseError& error) {
  const auto unknown = program.remaining(/*recurse=*/true);
  const bool wantsCommand = std::string_view(error.what()) == "A subcommand is required";
  if (!wantsCommand || unknown.empty()) return QString::fromStdString(error.what());
  const QString word = QString::fromStdString(unknown.front());
  const QStringList meant = ctl::nearestWords(word, ctl::namesOfCommands(ctl::lastParsedCommand(program)));
  return u"There is no command "_s + word + (meant.isEmpty() ? QString() : u", did you mean %1?"_s.arg(meant.first()));
}

// What the parser has to say: help that was asked for, or what is wrong with the words.
int endOfParsing(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    std::ostringstream text;
    program.exit(error, text, text);
    ctl::print(QString::fromStdString(text.str()).trimmed());
    return ctl::Done;
  }
  ctl::failed(reasonOf(program, error) + u" (--help tells more)"_s);
  return ctl::Usage;
}

bool areTexts(int count, char** words) {
  for (int i = 1; i < count; ++i) {
    QString reason;
    if (!ctl::textFromUtf8(words[i], u"argument %1"_s.arg(i), &reason)) {
      ctl::failed(reason);
      return false;
    }
  }
  return true;
}

int run(int argc, char** argv) {
  CLI::App program("Read and change what Quillo's applications share: settings, journal and entries.", "quilloctl");
  program.set_version_flag("--version", "quilloctl " QUILLO_VERSION);
  program.require_subcommand(1);
  program.footer("Exit status: 0 done, 1 failed (one line says why), 2 wrong usage.");
  ctl::Action action;
  CommonOptions options;
  ctl::PageDrawing drawing;
  addCommands(program, action, options, drawing);
  addCommonOptions(program, options);
  if (!areTexts(argc, argv)) return ctl::Failed;
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return endOfParsing(program, error);
  }

  const auto application = drawing.makeApplication(argc, argv);
  Bundle::setMainBundle({u":/quillo"_s, {{InfoKey::identifier, QString(Identifier::mainApplication)}}});
  QStringList homeArguments;
  if (!options.home.empty()) {
    const QString directory = QFile::decodeName(QByteArray::fromStdString(options.home));
    if (!QFileInfo(directory).isDir()) return ctl::failed(directory + u": no such directory"_s);
    UserDirectories::moveTo(directory);
    homeArguments = {u"--home"_s, UserDirectories::current().home};
  }

  // Asks for the keyboard only when a key is to be named.
  XkbKeyboardLayouts keyboardLayouts;
  PTKeyCodeTranslator::setKeyboardLayouts(&keyboardLayouts);
  Services services(homeArguments);
  ctl::Context context{.config = QuilloConfig::sharedConfig(),
                       .directories = UserDirectories::current(),
                       .post = [&services](const QString& name) { return services.post(name); },
                       .toggleAgent = toggleAgent,
                       .json = options.json,
                       .session = [&services] { return services.session(); },
                       .remindersManager = &RemindersManager::sharedManager,
                       .backupSchedule = [&services]() -> BackupSchedule& { return services.backupSchedule(); },
                       .homeArguments = homeArguments};
  const int code = action(context);
  PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  ctl::holdStandardStreams();
  // What we make is for the user alone.
  FileModeMask::makePrivate();
  return ctl::finishOutput(run(argc, argv));
}
