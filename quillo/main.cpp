// The composition root of the main application: the one place in it that names the real services of the desktop.

#include "about/ProgramIdentity.h"
#include "app/logging/LoggingSetup.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/panels/AlertSheet.h"
#include "entry/panels/OpenPanelSheet.h"
#include "entry/session/EntryDraft.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/Bundle.h"
#include "foundation/DetachedProcess.h"
#include "foundation/DistributedNotificationCenter.h"
#include "foundation/FileModeMask.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "journal/model/IndexedJournalReader.h"
#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusNotifications.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/XdgWorkspace.h"
#include "platform/linux/desktop/Display.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/services/OnlineServices.h"
#include "quillo/QuilloApplication.h"

#include <QApplication>
#include <QFileInfo>

#include <CLI/CLI.hpp>

#include <iostream>
#include <optional>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

struct Arguments {
  QStringList urls;
  std::optional<int> exitCode;  // the program is to end at once
};

Arguments readArguments(int argc, char** argv) {
  CLI::App program("Quillo: read, search and write your journal.", "quillo");
  program.set_version_flag("--version", "quillo " QUILLO_VERSION);
  std::string home;
  std::vector<std::string> urls;
  program.add_option("--home", home, "Use this directory in place of the user's home")->type_name("DIR");
  program.add_option("URL", urls, "quillo://open, edit?entryId=UUID, post, preferences or updatebookmarks");
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
  return arguments;
}

// With another home it is another program: it must not answer for the one that the user works with.
QString instanceName() {
  const QString usual = qEnvironmentVariable("HOME");
  const QString home = UserDirectories::current().home;
  if (home == usual) return Identifier::mainApplication;
  return u"%1.h%2"_s.arg(Identifier::mainApplication, QString::number(qHash(home, 0), 16));
}

// In a terminal, as quilloctl knows them.
void showPreferences() {
  const QStringList arguments{u"--home"_s, UserDirectories::current().home, u"open-url"_s, u"quillo://preferences"_s};
  if (!startDetached(QApplication::applicationDirPath() + u"/quilloctl"_s, arguments, u"/"_s))
    QLLogWarn(u"The settings cannot be shown: quilloctl does not start"_s);
}

// From the set-up of the log to the end of the event loop.
int runQuillo(QApplication& application, SingleInstance& instance, const QStringList& urls) {
  QuilloConfig& config = QuilloConfig::sharedConfig();
  setUpLogging(QUrl::fromLocalFile(config.groupLogsDirectoryURL().toLocalFile() + u"/Quillo"_s),
               config.verboseLogging());
  const TerminationSignals signals([] { QApplication::exit(); });
  SessionBusNotifications notifications;
  DistributedNotificationCenter::sharedCenter().setTransport(&notifications);
  SessionBusApplications runningApplications;
  runningApplications.registerSelf(Identifier::mainApplication, [] { QApplication::exit(); });
  XdgWorkspace workspace;
  config.setWorkspace(&workspace);
  QLJournalPackageFile::setDefaultPackageURLProvider([&config] { return config.configuredJournalFileURL(); });
  const UserDirectories& directories = UserDirectories::current();
  UserDefaults& defaults = UserDefaults::standardUserDefaults();
  const SystemClock clock;
  const auto weather = onlineWeather(clock, defaults, directories.caches);
  AlertSheet alerts;
  OpenPanelSheet openPanel;

  int code = 0;
  {
    SpellChecker spellChecker(SpellChecker::standardSources(directories));
    EntryDraft draft(directories.state + u"/quillo/UnsavedEntryOfQuillo.plist"_s);
    QuilloApplication quillo(
        {.config = config,
         .bundle = Bundle::mainBundle(),
         .distributedCenter = DistributedNotificationCenter::sharedCenter(),
         .defaults = defaults,
         .text = {.defaults = defaults, .localCenter = NotificationCenter::localCenter(), .spellChecker = spellChecker},
         .draft = draft,
         .workspace = workspace,
         .weather = *weather,
         .makeLocationManager = [&defaults] { return onlineLocation(defaults); },
         .makeReader = [](const QLJournalPackageFile& package) -> std::unique_ptr<JournalReader> {
           return std::make_unique<IndexedJournalReader>(package);
         },
         .alerts = alerts,
         .openPanel = openPanel,
         .showPreferences = showPreferences,
         .terminate = [] { QApplication::exit(); }});
    QObject::connect(&application, &QApplication::aboutToQuit, &quillo, &QuilloApplication::willTerminate);
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &quillo, &QuilloApplication::willTerminate,
                     Qt::DirectConnection);
    quillo.open(urls);
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
  QApplication::setWindowIcon(programIcon());
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
  return runQuillo(application, instance, arguments.urls);
}
